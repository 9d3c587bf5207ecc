#include <Varnex/protocols/ProtocolHTTP.h>

#include <Varnex/protocols/HeadReader.h>
#include <Varnex/protocols/HeadText.h>
#include <Varnex/streams/ioStream.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace Varnex {

namespace {

/// Line ends are not among them: wanted so.
constexpr std::string_view kChunkBlanks = " \t";

/// The hexadecimal number at the front of a line; false: none, or more than 32 bits.
bool parseChunkSize(std::string_view line, std::uint32_t& size) {
    line.remove_prefix(std::min(line.find_first_not_of(kChunkBlanks), line.size()));
    return std::from_chars(line.data(), line.data() + line.size(), size, 16).ec == std::errc();
}

}  // namespace

ProtocolHTTP::ProtocolHTTP(ioStream* newStream) : stream(newStream) {}

ProtocolHTTP::~ProtocolHTTP() {
    if (ownsStream) delete stream;
}

void ProtocolHTTP::setStream(ioStream* newStream) {
    if (ownsStream) delete stream;
    ownsStream = false;
    stream = newStream;
    chunkRemaining = 0;
}

void ProtocolHTTP::setCommunicator(Communicator* communicator) {
    setStream(new ioStream(communicator, false));
    ownsStream = true;
}

ioStream* ProtocolHTTP::releaseStream() {
    ownsStream = false;
    return std::exchange(stream, nullptr);
}

bool ProtocolHTTP::flush(const std::string& head, std::string_view body) {
    if (stream == nullptr) return false;
    if (stream->good()) {
        HeadText::write(*stream, head);
        stream->write(body.data(), static_cast<std::streamsize>(body.size()));
    }
    stream->flush();
    return stream->good();
}

bool ProtocolHTTP::sendRequest(const RequestLine& line, const MessageHeader& header) {
    return flush(HeadText::of(line, header), "");
}

bool ProtocolHTTP::sendRequest(const Request& request) {
    return flush(HeadText::of(request, request.header), request.body);
}

bool ProtocolHTTP::sendReply(const StatusLine& line, const MessageHeader& header) {
    if (stream == nullptr) return false;
    if (line.version.isSimple()) return true;
    return flush(HeadText::of(line, header, *stream), "");
}

bool ProtocolHTTP::sendReply(const Reply& reply) {
    return stream != nullptr && flush(HeadText::of(reply, reply.header, *stream), reply.body);
}

bool ProtocolHTTP::sendBody(const void* data, int length) {
    if (stream == nullptr || !stream->good() || length < 0) return false;
    return flush("", {static_cast<const char*>(data), static_cast<std::size_t>(length)});
}

bool ProtocolHTTP::sendChunkedBody(const void* data, int length) {
    if (stream == nullptr || !stream->good() || length < 0) return false;
    char size[12];
    const char* const end = std::to_chars(std::begin(size), std::end(size), length, 16).ptr;
    stream->setf(std::ios_base::hex, std::ios_base::basefield);  // and it stays: wanted so
    return flush(std::string(static_cast<const char*>(size), end).append(crlf),
                 {static_cast<const char*>(data), static_cast<std::size_t>(length)});
}

bool ProtocolHTTP::receiveRequest(RequestLine& line, MessageHeader& header) {
    header.clear();
    if (stream == nullptr || !(*stream >> line)) return false;
    return line.version.isSimple() || *stream >> header;
}

bool ProtocolHTTP::receiveRequest(Request& request) {
    request.query.clear();
    request.body.clear();
    if (!receiveRequest(request, request.header)) return false;
    request.splitQuery();
    return true;
}

bool ProtocolHTTP::receiveReply(StatusLine& line, MessageHeader& header) {
    header.clear();
    return stream != nullptr && *stream >> line && *stream >> header;
}

bool ProtocolHTTP::receiveReply(Reply& reply) {
    reply.header.clear();
    return stream != nullptr && *stream >> reply;
}

bool ProtocolHTTP::receiveBody(unsigned char* buffer, int& length) {
    if (stream == nullptr || !stream->good() || length < 0) {
        length = 0;
        return false;
    }
    stream->read(reinterpret_cast<char*>(buffer), length);
    length = static_cast<int>(stream->gcount());
    return !stream->fail();
}

bool ProtocolHTTP::receiveChunkedBody(unsigned char* buffer, int& length) {
    const int wanted = std::exchange(length, 0);
    if (stream == nullptr || wanted < 0) return false;
    LineReader lines(*stream);
    std::string_view line;
    if (chunkRemaining == 0) {
        if (!lines.readAfterBlanks(line, kChunkBlanks)) return false;
        if (!parseChunkSize(line, chunkRemaining)) return false;
    }
    length = static_cast<int>(std::min<std::uint32_t>(chunkRemaining, static_cast<std::uint32_t>(wanted)));
    if (length == 0) return true;
    if (!receiveBody(buffer, length) || length == 0) return false;
    chunkRemaining -= static_cast<std::uint32_t>(length);
    if (chunkRemaining > 0) return true;
    return lines.read(line) && isBlank(line, kChunkBlanks);
}

}  // namespace Varnex
