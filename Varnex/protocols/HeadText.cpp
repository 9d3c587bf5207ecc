#include <Varnex/protocols/HeadText.h>

namespace Varnex::HeadText {

namespace {

constexpr std::string_view sp = ProtocolHTTP::sp, crlf = ProtocolHTTP::crlf, separator = ProtocolHTTP::separator;

constexpr unsigned long kCodeEnd = 1000;

void append(std::string& text, const ProtocolHTTP::Version& version) {
    text.append(version.name).append("/").append(std::to_string(version.major));
    text.append(".").append(std::to_string(version.minor));
}

}  // namespace

void append(std::string& text, const MessageHeader& header) {
    std::size_t size = text.size() + crlf.size();
    for (const auto& [name, value] : header.params())
        size += name.size() + separator.size() + value.size() + crlf.size();
    text.reserve(size);
    for (const auto& [name, value] : header.params()) text.append(name).append(separator).append(value).append(crlf);
    text.append(crlf);
}

void append(std::string& text, const ProtocolHTTP::RequestLine& line) {
    text.append(line.method).append(sp).append(line.uri);
    if (!line.version.isSimple()) append(text.append(sp), line.version);
    text.append(crlf);
}

bool append(std::string& text, const ProtocolHTTP::StatusLine& line) {
    if (line.version.isSimple()) return true;
    if (line.code >= kCodeEnd) return false;
    append(text, line.version);
    text.append(sp).append(std::to_string(line.code)).append(sp).append(line.phrase).append(crlf);
    return true;
}

std::string of(const ProtocolHTTP::RequestLine& line, const MessageHeader& header) {
    std::string text;
    append(text, line);
    if (!line.version.isSimple()) append(text, header);
    return text;
}

std::string of(const ProtocolHTTP::StatusLine& line, const MessageHeader& header, std::ostream& stream) {
    std::string text;
    if (!append(text, line))
        stream.setstate(std::ios_base::failbit);
    else if (!line.version.isSimple())
        append(text, header);
    return text;
}

}  // namespace Varnex::HeadText
