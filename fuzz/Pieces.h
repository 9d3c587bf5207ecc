#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

/// What the targets of the stream buffers have in common. An input is one byte for the target's own choices, the
/// sizes, and the text.
namespace Fuzz {

/// The first: bytes of the work array, in a block of exactly that size; 255: the buffer makes its own. The others: what
/// `pieceSize` takes.
using Sizes = std::span<const std::uint8_t, 4>;

inline constexpr std::size_t kTextAt = 1 + Sizes::extent;

inline void check(bool holds) {
    if (!holds) std::abort();
}

/// The text of an input, in a block of its size; rarely, for that is slow, repeated past the library's own arrays.
inline std::vector<char> textOf(const std::uint8_t* data, std::size_t size) {
    const std::size_t length = size - kTextAt;
    const bool isLong = (data[0] & 1) != 0 && data[1] == 255 && length > 0;
    std::vector<char> text(isLong ? std::max<std::size_t>(length, 9000) : length);
    for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(data[kTextAt + i % length]);
    return text;
}

/// Has `checkInput(choice, sizes, text)` called for an input that is long enough.
template <class Check>
int run(const std::uint8_t* data, std::size_t size, Check checkInput) {
    if (size < kTextAt) return 0;
    const std::vector<char> block = textOf(data, size);
    checkInput(data[0], Sizes(data + 1, Sizes::extent), std::string_view(block.data(), block.size()));
    return 0;
}

/// 0: the operation for one character; otherwise 1 to 8129, mostly small.
constexpr std::size_t pieceSize(Sizes sizes, std::size_t piece) {
    const std::size_t n = sizes[1 + piece % 3];
    return n == 0 ? 0 : n * n / 8 + 1;
}

/// Writes the text in pieces and flushes; the buffer must not be used any more.
inline void write(std::streambuf& buffer, std::string_view text, Sizes sizes) {
    const auto work = std::make_unique<char[]>(sizes[0]);
    if (sizes[0] != 255) buffer.pubsetbuf(work.get(), sizes[0]);
    for (std::size_t i = 0; !text.empty(); ++i) {
        const std::string_view piece = text.substr(0, pieceSize(sizes, i));
        if (piece.empty())
            check(buffer.sputc(text[0]) == static_cast<unsigned char>(text[0]));
        else
            check(buffer.sputn(piece.data(), std::ssize(piece)) == std::ssize(piece));
        text.remove_prefix(std::max<std::size_t>(piece.size(), 1));
    }
    check(buffer.pubsync() == 0);
}

/// Reads in pieces, to the end or until there are `enough`; the buffer must not be used any more.
inline std::string read(std::streambuf& buffer, Sizes sizes, std::size_t enough = std::string::npos) {
    const auto work = std::make_unique<char[]>(sizes[0]);
    if (sizes[0] != 255) buffer.pubsetbuf(work.get(), sizes[0]);
    std::string text;
    for (std::size_t i = 0; text.size() < enough && buffer.sgetc() != std::streambuf::traits_type::eof(); ++i) {
        std::vector<char> piece(pieceSize(sizes, i));
        if (piece.empty())
            text += static_cast<char>(buffer.sbumpc());
        else
            text.append(piece.data(), static_cast<std::size_t>(buffer.sgetn(piece.data(), std::ssize(piece))));
    }
    return text;
}

/// The largest pieces, through the work array that the buffer makes.
inline constexpr std::uint8_t kLargest[] = {255, 255, 255, 255};

}  // namespace Fuzz
