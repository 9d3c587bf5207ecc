#pragma once

#include <Varnex/Export.h>

#include <cstddef>
#include <streambuf>
#include <string>
#include <string_view>

namespace Varnex {

class CodedOutput;

/// Writes the bytes of the quoted-printable text that is written to it to another stream buffer, which outlives it.
///
/// Never refuses text: a soft line break ("=", perhaps white space, line end) vanishes, a "=" that begins neither such
/// a break nor two hexadecimal digits of either case is kept as it is, and an unfinished one waits for the rest, which
/// may never come. Line ends stay as they are. After a write that failed begin anew
/// with a new buffer. One thread at a time.
class VARNEX_API quotedprintabledecodebuf : public std::streambuf {
public:
    static constexpr std::size_t kDefaultMaxPadding = 998;

    /// With `headerMode` the "Q" variant for words of a header (RFC 2047), in which "_" is a space.
    explicit quotedprintabledecodebuf(std::streambuf* target, bool headerMode = false);
    quotedprintabledecodebuf(const quotedprintabledecodebuf&) = delete;
    quotedprintabledecodebuf& operator=(const quotedprintabledecodebuf&) = delete;
    ~quotedprintabledecodebuf() override;

    /// White space between "=" and its line end, at most; with more they are kept as they are. 0: no limit.
    void setMaxPadding(std::size_t characters) { maxPadding_ = characters; }

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* s, std::streamsize n) override;
    /// Flushes the target; an unfinished "=" stays waiting.
    int sync() override;

private:
    void decodeSlice(CodedOutput& out, std::string_view text);
    [[nodiscard]] std::size_t decodeWhole(CodedOutput& out, std::string_view text);
    [[nodiscard]] char* decodeRun(char* out, std::string_view run) const;
    [[nodiscard]] bool decodeEscape(CodedOutput& out, char c);
    [[nodiscard]] bool mayGrow(char c) const;

    std::streambuf* target_;
    bool headerMode_;
    std::size_t maxPadding_ = kDefaultMaxPadding;
    std::string escape_;  // "=" and what followed it, while it may still become one
};

}  // namespace Varnex
