#pragma once

#include <concepts>
#include <cstddef>

namespace Varnex {

// Private to the library: the wire's byte order, by shifts, whatever the host's.

/// Writes `value` to `sizeof(UInt)` bytes, most significant first.
template <std::unsigned_integral UInt>
void storeBigEndian(char* bytes, UInt value) {
    for (std::size_t i = 0; i < sizeof(UInt); ++i)
        bytes[i] = static_cast<char>(static_cast<unsigned char>(value >> (8 * (sizeof(UInt) - 1 - i))));
}

/// Reads `sizeof(UInt)` bytes, most significant first.
template <std::unsigned_integral UInt>
[[nodiscard]] UInt loadBigEndian(const char* bytes) {
    UInt value = 0;
    for (std::size_t i = 0; i < sizeof(UInt); ++i)
        value = static_cast<UInt>(value << (8 * (i > 0)) | static_cast<unsigned char>(bytes[i]));
    return value;
}

}  // namespace Varnex
