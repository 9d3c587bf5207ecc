#pragma once

#include <Varnex/Export.h>
#include <Varnex/streams/codecbuf.h>

#include <memory>
#include <string_view>

namespace Varnex {

/// A stream buffer in front of another stream: what is written is URL-encoded there, URL-encoded text there is read as
/// bytes.
///
/// Written as they are: ASCII letters and digits, "-_.!~* ()" with the space, and what the constructor allows; every
/// other byte becomes "%" and two hexadecimal digits, upper case. Reading turns "%" and two digits into the byte, which
/// may be NUL, and leaves everything else alone, "+" too, and a "%" without digits.
class VARNEX_API urlbuf : public codecbuf {
public:
    /// Writes the characters of `allowed` as they are, and those of `alwaysEncoded` never, not even letters.
    explicit urlbuf(std::ostream& target, std::string_view alwaysEncoded = "", std::string_view allowed = "");
    explicit urlbuf(std::istream& source);
    /// Writes to and reads from one stream.
    explicit urlbuf(std::iostream& stream, std::string_view alwaysEncoded = "", std::string_view allowed = "");
    ~urlbuf() override;

protected:
    /// Encodes into the target; how many bytes, fewer when it failed.
    std::streamsize encode(const char* s, std::streamsize n);
    /// Decodes from the source.
    std::streamsize decode(char* s, std::streamsize n);

    std::streamsize convertWritten(const char* s, std::streamsize n) override { return encode(s, n); }
    bool finishWritten() override { return isTargetGood(); }
    std::streamsize convertRead(char* s, std::streamsize n) override { return decode(s, n); }

private:
    struct Table;

    urlbuf(std::ostream* target, std::istream* source, std::string_view alwaysEncoded, std::string_view allowed);
    [[nodiscard]] int_type decodeByte();

    std::unique_ptr<const Table> table_;
    int_type next_;  // read already, as the digit of a "%" that is none; the end of the file: nothing
};

}  // namespace Varnex
