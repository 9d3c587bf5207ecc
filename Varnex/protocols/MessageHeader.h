#pragma once

#include <Plexa/ParamBag.h>
#include <Varnex/Export.h>

#include <iosfwd>

namespace Varnex {

/// The header of a message: names, in upper or lower case, with their values. Of a name that comes twice the last value
/// stays.
class VARNEX_API MessageHeader : public Plexa::ParamBag {
public:
    MessageHeader() : ParamBag(Names::IgnoringCase) {}
    MessageHeader(const MessageHeader&) = default;
    MessageHeader(MessageHeader&&) = default;
    MessageHeader& operator=(const MessageHeader&) = default;
    MessageHeader& operator=(MessageHeader&&) = default;
    ~MessageHeader() override;

    /// Stores a value that cannot become a header line of its own. False, and nothing changes: the name is empty or has
    /// characters that no name has (RFC 9110, section 5.1), or the value has CR, LF or NUL.
    [[nodiscard]] bool setChecked(std::string_view name, std::string_view value);
};

/// Reads up to the blank line and with it, or up to the end of the stream. A line that begins with a blank continues
/// the value before it, after ";". Malformed, or over a limit of `ProtocolHTTP`: the fail bit, and an empty header.
VARNEX_API std::istream& operator>>(std::istream& stream, MessageHeader& header);

/// Writes the lines and the blank line, in one piece. Nothing is escaped: see `MessageHeader::setChecked`.
VARNEX_API std::ostream& operator<<(std::ostream& stream, const MessageHeader& header);

}  // namespace Varnex
