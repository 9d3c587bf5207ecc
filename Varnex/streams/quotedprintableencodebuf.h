#pragma once

#include <Varnex/Export.h>

#include <ios>
#include <span>
#include <streambuf>

namespace Varnex {

class CodedOutput;

/// Writes what is written to it as quoted-printable (RFC 2045) to another stream buffer, which outlives it.
///
/// Line feeds become CR LF; lines are never broken, however long; white space at their ends stays. Nothing is buffered
/// but a carriage return, which waits to see whether a line feed follows. After a write that failed begin anew
/// with a new buffer. One thread at a time.
class VARNEX_API quotedprintableencodebuf : public std::streambuf {
public:
    /// With `headerMode` the "Q" variant for words of a header (RFC 2047), in which "_" is a space.
    explicit quotedprintableencodebuf(std::streambuf* target, bool headerMode = false);
    quotedprintableencodebuf(const quotedprintableencodebuf&) = delete;
    quotedprintableencodebuf& operator=(const quotedprintableencodebuf&) = delete;
    ~quotedprintableencodebuf() override;

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* s, std::streamsize n) override;
    /// Flushes the target; a waiting carriage return stays waiting.
    int sync() override;

private:
    void encodeSlice(CodedOutput& out, std::span<const char> bytes);
    [[nodiscard]] std::size_t encodeRun(CodedOutput& out, std::span<const char> bytes);
    void encodeLineEnd(CodedOutput& out, char c);

    std::streambuf* target_;
    bool headerMode_;
    int pendingCR_ = -1;          // 13 while one waits
    std::streamsize column_ = 0;  // counted, but no line is broken for it
};

}  // namespace Varnex
