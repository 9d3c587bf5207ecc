#pragma once

namespace Varnex {

// Private to the library.

/// The value of a hexadecimal digit in upper or lower case; -1 for everything else, the end of the file included.
constexpr int hexValue(int c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

}  // namespace Varnex
