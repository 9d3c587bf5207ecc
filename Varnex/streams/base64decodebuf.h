#pragma once

#include <Varnex/Export.h>
#include <Varnex/streams/codecbuf.h>

#include <array>
#include <memory>
#include <string_view>

namespace Varnex {

class Base64Decoder;

/// The mirror of `base64encodebuf`: Base64 that is written reaches the other stream as bytes, bytes of the other stream
/// are read as Base64.
///
/// Writing skips what is not Base64; the first "=" ends it for good, and what follows is taken and ignored. A flush
/// hands over the bytes that are whole; a group that it cut goes on. What is read is padded and has no line breaks.
class VARNEX_API base64decodebuf : public codecbuf {
public:
    explicit base64decodebuf(std::ostream& target);
    explicit base64decodebuf(std::istream& source);
    /// Writes to and reads from one stream.
    explicit base64decodebuf(std::iostream& stream);
    ~base64decodebuf() override;

protected:
    /// Decodes into the target; how many characters, fewer when it failed.
    std::streamsize decode(const char* s, std::streamsize n);
    /// Encodes from the source.
    std::streamsize encode(char* s, std::streamsize n);
    /// Encodes the one or two bytes before the source's end, padded.
    void finishencode(std::string_view bytes);

    std::streamsize convertWritten(const char* s, std::streamsize n) override { return decode(s, n); }
    bool finishWritten() override { return isTargetGood(); }
    std::streamsize convertRead(char* s, std::streamsize n) override { return encode(s, n); }

private:
    base64decodebuf(std::ostream* target, std::istream* source);
    [[nodiscard]] std::streamsize encodeGroups(char* s, std::streamsize n);

    std::unique_ptr<Base64Decoder> decoder_;
    std::array<char, 4> group_;
    std::string_view unread_;  // the part of `group_` that there was no room for
};

}  // namespace Varnex
