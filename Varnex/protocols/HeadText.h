#pragma once

#include <Varnex/protocols/ProtocolHTTP.h>

#include <ostream>
#include <string>

namespace Varnex::HeadText {

// Private to the library: the text of message heads, which goes to a stream in one piece, whatever number format that
// has.

void append(std::string& text, const MessageHeader& header);
void append(std::string& text, const ProtocolHTTP::RequestLine& line);
/// Nothing for HTTP/0.x. False: the code is too large.
[[nodiscard]] bool append(std::string& text, const ProtocolHTTP::StatusLine& line);

/// The request line, and the header unless it is HTTP/0.x.
[[nodiscard]] std::string of(const ProtocolHTTP::RequestLine& line, const MessageHeader& header);
/// The same of a reply; a code that is too large gives nothing and sets the stream's fail bit.
[[nodiscard]] std::string of(const ProtocolHTTP::StatusLine& line, const MessageHeader& header, std::ostream& stream);

inline std::ostream& write(std::ostream& stream, const std::string& text) {
    return stream.write(text.data(), static_cast<std::streamsize>(text.size()));
}

}  // namespace Varnex::HeadText
