#pragma once

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace Varnex {

// Private to the library: texts of the C interface, made by malloc(3).

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

using CText = std::unique_ptr<char, FreeDeleter>;

/// A copy; what follows a NUL in `text` is lost.
inline CText copyOf(const char* text) {
    char* const copy = ::strdup(text);
    if (copy == nullptr) throw std::bad_alloc();
    return CText(copy);
}

/// The same; null for an empty text.
inline CText copyOrNull(const std::string& text) {
    return text.empty() ? nullptr : copyOf(text.c_str());
}

inline std::string orEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

}  // namespace Varnex
