#pragma once

#include <Varnex/protocols/ProtocolHTTP.h>

#include <string>

namespace Varnex::ReplyHead {

// Private to the library: what a web server adds to the replies of its pages.

/// As a quoted-string (RFC 9110, section 5.6.4), without control characters.
[[nodiscard]] std::string quoted(const std::string& text);

/// Also of codes that are newer than the table of the protocol.
[[nodiscard]] std::string phraseOf(unsigned long code);

/// Now, as the date of a header.
[[nodiscard]] const std::string& date();

/// Empties a reply, but keeps its memory: 200, as HTTP/1.1.
void reset(ProtocolHTTP::Reply& reply);

/// Puts blanks in place of what would end a line of the head: CR, LF and NUL.
void neutralise(ProtocolHTTP::Reply& reply);

}  // namespace Varnex::ReplyHead
