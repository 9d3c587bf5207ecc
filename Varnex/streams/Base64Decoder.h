#pragma once

#include <cstddef>
#include <string_view>

namespace Varnex {

// Private to the library.

/// Decodes Base64 text that comes in pieces: skips what is outside of the alphabet, ends for good at the first "=".
class Base64Decoder {
public:
    /// Decodes `text`, into no more than the `room` bytes at `out`, which are enough for it; how many bytes came out.
    std::size_t decode(char* out, std::size_t room, std::string_view text);

    /// Whether "=" was met.
    [[nodiscard]] bool hasEnded() const { return ended_; }

    /// Whether the last group has one character so far, which is no byte.
    [[nodiscard]] bool hasLoneCharacter() const { return state_ == 1; }

    /// Bytes that `characters` of the alphabet decode to at most, whatever came before.
    static constexpr std::size_t mostBytes(std::size_t characters) { return characters - characters / 4; }

private:
    [[nodiscard]] char* decodeOne(char* out, char c);

    int state_ = 0;           // characters of the present group so far
    unsigned lastValue_ = 0;  // the 6 bits of the last one
    bool ended_ = false;
};

}  // namespace Varnex
