#pragma once

#include <Varnex/Export.h>
#include <Varnex/streams/codecbuf.h>

#include <memory>
#include <span>
#include <string>

namespace Varnex {

class Base64Decoder;
class CodedOutput;

/// A stream buffer in front of another stream: what is written becomes Base64 there, Base64 there is read as bytes.
///
/// The length of a line is the target's `width()` at the time of writing; 0 or less: no line breaks. A flush writes the
/// padding; the destructor does not, for the target may be gone. Reading skips what is not Base64, ends for good at the
/// first "=", and leaves what follows that in the source, a second "=" too.
class VARNEX_API base64encodebuf : public codecbuf {
public:
    /// `lineSeparator` begins a new line.
    explicit base64encodebuf(std::ostream& target, std::string lineSeparator = "");
    explicit base64encodebuf(std::istream& source);
    /// Writes to and reads from one stream.
    explicit base64encodebuf(std::iostream& stream, std::string lineSeparator = "");
    ~base64encodebuf() override;

protected:
    /// Encodes into the target; how many bytes, fewer when it failed.
    std::streamsize encode(const char* s, std::streamsize n);
    /// Writes what is left of a group, and the padding; false when the target failed.
    bool finishencode();
    /// Decodes from the source.
    std::streamsize decode(char* s, std::streamsize n);

    std::streamsize convertWritten(const char* s, std::streamsize n) override { return encode(s, n); }
    bool finishWritten() override { return finishencode(); }
    std::streamsize convertRead(char* s, std::streamsize n) override { return decode(s, n); }

private:
    base64encodebuf(std::ostream* target, std::istream* source, std::string lineSeparator);
    void encodeSlice(CodedOutput& out, std::span<const char> bytes);
    [[nodiscard]] std::size_t encodeGroups(CodedOutput& out, std::span<const char> bytes);
    void breakFullLine(CodedOutput& out);
    void encodeByte(CodedOutput& out, unsigned char byte);
    void putCharacter(CodedOutput& out, unsigned value);
    void putThenCheckLine(CodedOutput& out, char c);
    [[nodiscard]] bool isLineFull(std::streamsize column) const;

    std::string lineSeparator_;
    int encodeState_ = 0;         // bytes of the present group so far
    unsigned lastByte_ = 0;       // the last one of them
    std::streamsize column_ = 0;  // characters on the present line
    std::unique_ptr<Base64Decoder> decoder_;
};

}  // namespace Varnex
