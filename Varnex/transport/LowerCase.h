#pragma once

#include <string>

namespace Varnex {

// Private to the library.

/// ASCII only, whatever the locale.
constexpr char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline void makeLowerCase(std::string& text) {
    for (char& c : text) c = lowerCase(c);
}

}  // namespace Varnex
