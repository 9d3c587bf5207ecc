#pragma once

#include <Varnex/Export.h>

#include <array>
#include <string_view>

namespace Varnex {

/// The alphabet of Base64 (RFC 4648, section 4).
inline constexpr char basis_64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// For each byte its position in `basis_64`; 127: not in the alphabet, such as "=" and white space.
inline constexpr std::array<unsigned char, 256> index_64 = [] {
    std::array<unsigned char, 256> table;
    table.fill(127);
    for (unsigned char i = 0; i < 64; ++i) table[static_cast<unsigned char>(basis_64[i])] = i;
    return table;
}();

/// Characters that `encodeBase64` writes for `length` bytes.
constexpr unsigned long encodedBase64Size(unsigned long length) {
    return (length / 3 + (length % 3 != 0)) * 4;
}

/// Writes exactly `encodedBase64Size(length)` characters: padded, no terminator, no line breaks.
VARNEX_API void encodeBase64(char* out, const void* data, unsigned long length);

/// Which text `decodeBase64` takes.
enum class Base64Mode {
    Strict,  ///< only what `encodeBase64` writes: whole padded groups, nothing between, unused bits zero
    Skip     ///< what the stream buffers take: other bytes are skipped, the first "=" or the end of the text ends it
};

enum class Base64Result {
    Decoded,
    TooSmall,  ///< nothing was written
    BadInput   ///< not strict, or an end that holds no whole byte; what was written is of no use
};

/// Decodes `text` into the `size` bytes at `out`, which may be null when `size` is 0. On return `size` is how many
/// bytes were written; with `TooSmall` how many are needed; with `BadInput` 0.
[[nodiscard]] VARNEX_API Base64Result decodeBase64(void* out, unsigned long& size, std::string_view text,
                                                   Base64Mode mode = Base64Mode::Strict);

}  // namespace Varnex
