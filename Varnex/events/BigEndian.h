#pragma once

#include <bit>
#include <concepts>
#include <cstring>

namespace Varnex {

// Private to the library: the wire's byte order, whatever the host's.

/// The value with its bytes in wire order, or back.
template <std::unsigned_integral UInt>
[[nodiscard]] UInt toBigEndian(UInt value) {
    if constexpr (std::endian::native == std::endian::big || sizeof(UInt) == 1) return value;
    if constexpr (sizeof(UInt) == 2) return __builtin_bswap16(value);
    if constexpr (sizeof(UInt) == 4) return __builtin_bswap32(value);
    if constexpr (sizeof(UInt) == 8) return __builtin_bswap64(value);
}

/// Writes `value` to `sizeof(UInt)` bytes, most significant first.
template <std::unsigned_integral UInt>
void storeBigEndian(char* bytes, UInt value) {
    value = toBigEndian(value);
    std::memcpy(bytes, &value, sizeof value);
}

/// Reads `sizeof(UInt)` bytes, most significant first.
template <std::unsigned_integral UInt>
[[nodiscard]] UInt loadBigEndian(const char* bytes) {
    UInt value;
    std::memcpy(&value, bytes, sizeof value);
    return toBigEndian(value);
}

}  // namespace Varnex
