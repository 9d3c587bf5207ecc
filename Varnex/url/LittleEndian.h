#pragma once

#include <cstddef>
#include <string_view>

namespace Varnex {

// Private to the library.

/// The unsigned number in the bytes from `at` on, which are there.
template <class Number>
constexpr Number littleEndian(std::string_view bytes, std::size_t at) {
    Number number = 0;
    for (std::size_t i = sizeof(Number); i-- > 0;)
        number = static_cast<Number>(number << 8 | static_cast<unsigned char>(bytes[at + i]));
    return number;
}

}  // namespace Varnex
