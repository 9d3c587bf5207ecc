#include <Varnex/protocols/HeadReader.h>
#include <Varnex/protocols/HeadText.h>
#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/streams/Hex.h>

#include <istream>
#include <ostream>

namespace Varnex {

namespace {

constexpr unsigned long kFirstCode = 100, kLastCode = 999;

std::istream& malformed(std::istream& stream) {
    stream.setstate(std::ios_base::failbit);
    return stream;
}

std::size_t skipWord(std::string_view line, std::size_t from) {
    while (from < line.size() && !isLineBlank(line[from])) ++from;
    return from;
}

bool readNumber(std::string_view s, std::size_t& pos, unsigned long base, unsigned long& value) {
    const std::size_t start = pos;
    value = 0;
    for (; pos < s.size(); ++pos) {
        const int digit = hexValue(static_cast<unsigned char>(s[pos]));
        if (digit < 0 || static_cast<unsigned long>(digit) >= base) break;
        value = value * base + static_cast<unsigned long>(digit);
    }
    return pos > start;
}

bool readVersion(std::string_view s, std::size_t& pos, ProtocolHTTP::Version& version) {
    const std::size_t slash = s.find('/', pos);
    if (slash == std::string_view::npos) return false;
    version.name = s.substr(pos, slash - pos);
    pos = slash + 1;
    if (!readNumber(s, pos, 10, version.major) || pos == s.size() || s[pos] != '.') return false;
    return readNumber(s, ++pos, 10, version.minor);
}

/// The fields that a reader fills, as if nothing had been read.
void reset(ProtocolHTTP::RequestLine& line) {
    line.method.clear();
    line.uri.clear();
    line.version.major = line.version.minor = 0;
}

void reset(ProtocolHTTP::StatusLine& line) {
    line.version.major = line.version.minor = line.code = 0;
    line.phrase.clear();
}

}  // namespace

bool ProtocolHTTP::parseNumber(const std::string& s, unsigned long& pos, unsigned long base, unsigned long& value) {
    return readNumber(s, pos, base, value);
}

bool ProtocolHTTP::parseVersion(const std::string& s, unsigned long& pos, Version& version) {
    return readVersion(s, pos, version);
}

std::istream& operator>>(std::istream& stream, ProtocolHTTP::RequestLine& request) {
    reset(request);
    LineReader lines(stream);
    std::string_view line;
    if (!stream.good() || !lines.readAfterBlanks(line)) return stream;
    const std::size_t method = skipBlanks(line, 0), methodEnd = skipWord(line, method);
    if (methodEnd == line.size()) {
        stream.clear(std::ios_base::failbit);  // and no other bit: wanted so
        return stream;
    }
    request.method = line.substr(method, methodEnd - method);
    const std::size_t uri = skipBlanks(line, methodEnd), uriEnd = skipWord(line, uri);
    if (uri == line.size()) return malformed(stream);
    request.uri = line.substr(uri, uriEnd - uri);
    request.version.minor = 9;
    if (uriEnd == line.size()) return stream;  // 0.9 of whatever the name was
    std::size_t version = skipBlanks(line, uriEnd);
    if (version == line.size()) {
        request.version.name = "HTTP";
        return stream;
    }
    if (!readVersion(line, version, request.version) || skipBlanks(line, version) < line.size())
        return malformed(stream);
    return stream;
}

std::ostream& operator<<(std::ostream& stream, const ProtocolHTTP::RequestLine& line) {
    if (!stream.good()) return stream;
    std::string text;
    HeadText::append(text, line);
    return HeadText::write(stream, text);
}

std::istream& operator>>(std::istream& stream, ProtocolHTTP::StatusLine& status) {
    reset(status);
    LineReader lines(stream);
    std::string_view line;
    if (!stream.good() || !lines.readAfterBlanks(line)) return stream;
    std::size_t pos = skipBlanks(line, 0);
    if (!readVersion(line, pos, status.version)) return malformed(stream);
    if (pos == line.size() || !isLineBlank(line[pos])) return malformed(stream);
    pos = skipBlanks(line, pos);
    if (!readNumber(line, pos, 10, status.code)) return malformed(stream);
    if (status.code < kFirstCode || status.code > kLastCode) return malformed(stream);
    if (pos < line.size() && !isLineBlank(line[pos])) return malformed(stream);
    status.phrase = withoutBlanks(line.substr(pos));
    return stream;
}

std::ostream& operator<<(std::ostream& stream, const ProtocolHTTP::StatusLine& line) {
    if (!stream.good()) return stream;
    std::string text;
    if (!HeadText::append(text, line)) stream.setstate(std::ios_base::failbit);
    return HeadText::write(stream, text);
}

std::istream& operator>>(std::istream& stream, ProtocolHTTP::Request& request) {
    reset(request);
    request.query.clear();
    request.header.clear();
    request.body.clear();
    if (stream.good()) stream >> static_cast<ProtocolHTTP::RequestLine&>(request);
    if (stream.good() && !request.version.isSimple()) stream >> request.header;
    if (stream.good()) request.splitQuery();
    return stream;
}

std::ostream& operator<<(std::ostream& stream, const ProtocolHTTP::Request& request) {
    if (!stream.good()) return stream;
    HeadText::write(stream, HeadText::of(request, request.header));
    return HeadText::write(stream, request.body);
}

std::istream& operator>>(std::istream& stream, ProtocolHTTP::Reply& reply) {
    reset(reply);
    reply.header.clear();
    reply.body.clear();
    if (stream.good()) stream >> static_cast<ProtocolHTTP::StatusLine&>(reply);
    if (stream.good()) stream >> reply.header;
    return stream;
}

std::ostream& operator<<(std::ostream& stream, const ProtocolHTTP::Reply& reply) {
    if (!stream.good()) return stream;
    HeadText::write(stream, HeadText::of(reply, reply.header, stream));
    return stream.good() ? HeadText::write(stream, reply.body) : stream;
}

}  // namespace Varnex
