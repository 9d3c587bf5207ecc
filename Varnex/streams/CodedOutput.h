#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <ostream>
#include <span>
#include <streambuf>
#include <string_view>

namespace Varnex {

// Private to the library.

/// Collects coded text and hands it to a stream buffer in blocks, so that encoders need no virtual call for each byte.
/// Destroying it drops what was not flushed.
class CodedOutput {
public:
    static constexpr std::size_t kCapacity = 12288;

    /// Bytes to be coded between two flushes, so that what was handled is known when the sink fails; whole Base64
    /// groups either way.
    static constexpr std::size_t kSlice = 4032;

    /// A null `sink` fails.
    explicit CodedOutput(std::streambuf* sink) : sink_(sink) {}

    /// Room for `n` characters, at most `kCapacity`; `commit` tells how many of them were used.
    [[nodiscard]] char* reserve(std::size_t n) {
        if (n > kCapacity - size_) failed_ = !flush();
        return text_.data() + size_;
    }
    void commit(std::size_t n) { size_ += n; }

    void put(char c) {
        *reserve(1) = c;
        commit(1);
    }
    void put(std::string_view text);

    /// False when the sink did not take everything since construction.
    [[nodiscard]] bool flush();

private:
    std::streambuf* sink_;
    std::size_t size_ = 0;
    bool failed_ = false;
    std::array<char, kCapacity> text_;  // left uninitialised
};

/// How one byte is written; a size of 0: not by this table.
struct CodedByte {
    std::array<char, 3> text;
    unsigned char size;
};

using CodeTable = std::array<CodedByte, 256>;

/// `c` as it is, or as `lead` and two hexadecimal digits, upper case.
constexpr CodedByte codedByte(unsigned char c, bool plain, char lead) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    if (plain) return {{static_cast<char>(c)}, 1};
    return {{lead, kDigits[c >> 4], kDigits[c & 0x0F]}, 3};
}

/// What `putCoded` did.
struct CodedRun {
    std::size_t bytes;
    std::size_t characters;
};

/// Writes bytes, at most `kSlice`, by the table up to the first that is not in it.
CodedRun putCoded(CodedOutput& out, std::span<const char> bytes, const CodeTable& table);

/// Has `encode(out, slice)` called for the bytes in slices, flushing after each; how many bytes were handled when the
/// sink failed.
template <class Encode>
std::streamsize putInSlices(std::streambuf* sink, std::span<const char> bytes, Encode encode) {
    CodedOutput out(sink);
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto slice = bytes.subspan(done).first(std::min(CodedOutput::kSlice, bytes.size() - done));
        encode(out, slice);
        if (!out.flush()) break;
        done += slice.size();
    }
    return static_cast<std::streamsize>(done);
}

/// The same into a stream, which has its badbit then, and takes nothing once it has failed.
template <class Encode>
std::streamsize putInSlices(std::ostream& target, std::span<const char> bytes, Encode encode) {
    if (target.fail()) return 0;
    const std::streamsize done = putInSlices(target.rdbuf(), bytes, encode);
    if (done < std::ssize(bytes)) target.setstate(std::ios_base::badbit);
    return done;
}

}  // namespace Varnex
