#pragma once

#include <array>
#include <cstddef>

namespace Varnex {

// Private to the library.

/// By byte; -1: not a hexadecimal digit.
inline constexpr std::array<signed char, 256> kHexValues = [] {
    std::array<signed char, 256> values;
    values.fill(-1);
    for (signed char i = 0; i < 10; ++i) values[static_cast<std::size_t>('0' + i)] = i;
    for (signed char i = 10; i < 16; ++i)
        values[static_cast<std::size_t>('A' + i - 10)] = values[static_cast<std::size_t>('a' + i - 10)] = i;
    return values;
}();

/// The value of a hexadecimal digit in upper or lower case; -1 for everything else, the end of the file included.
constexpr int hexValue(int c) {
    return c < 0 ? -1 : kHexValues[static_cast<std::size_t>(c & 0xFF)];
}

/// The byte of two hexadecimal digits, or -1.
constexpr int hexPair(int high, int low) {
    const int first = hexValue(high), second = hexValue(low);
    return first < 0 || second < 0 ? -1 : first << 4 | second;
}

}  // namespace Varnex
