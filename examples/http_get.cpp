// http_get HOST PORT PATH: writes what a server answers to standard output. Exit status 0 when it answers 2xx, and
// nothing is missing.
#include <Varnex/protocols/ChunkedReader.h>
#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/streams/ioStream.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Exception.h>

#include <algorithm>
#include <iostream>
#include <sstream>

using Varnex::ProtocolHTTP;

namespace {

constexpr int kPatienceMs = 60'000;

// At most so many bytes; how many there were.
unsigned long copy(std::istream& from, std::ostream& to, unsigned long most = ~0UL) {
    char block[16384];
    unsigned long done = 0;
    for (std::streamsize n = 1; n > 0 && done < most && to; done += static_cast<unsigned long>(n)) {
        from.read(block, static_cast<std::streamsize>(std::min(most - done, sizeof block)));
        n = from.gcount();
        to.write(block, n);
    }
    return done;
}

// False: something is missing, or nobody can tell where the body ends.
bool copyBody(const ProtocolHTTP::Reply& reply, Varnex::ioStream& stream, std::ostream& to) {
    if (reply.code == 204 || reply.code == 304) return true;
    if (reply.header.hasParam("Transfer-Encoding")) {
        Varnex::ChunkedReader chunks(stream);
        std::istream body(&chunks);
        if (reply.header.getParam("Transfer-Encoding") == "chunked") copy(body, to);
        return chunks.isComplete();
    }
    if (reply.header.hasParam("Content-Length")) {
        const auto length = ProtocolHTTP::parseNumber(reply.header.getParam("Content-Length"), ',');
        return length.size() == 1 && copy(stream, to, length[0]) == length[0];
    }
    copy(stream, to);
    return stream.rdbuf()->waitForData(0) == Varnex::Receiver::WaitData;  // its end, not that of our patience
}

std::string authority(const std::string& host, unsigned short port) {
    const bool isAddress6 = host.find(':') != std::string::npos;
    return (isAddress6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

bool get(const std::string& host, unsigned short port, const std::string& path, std::ostream& to) {
    Varnex::Client client;
    client.open(host, port);
    Varnex::ioStream stream(&client, false);
    stream.rdbuf()->setDeadline(kPatienceMs);  // for everything, however the server trickles
    ProtocolHTTP http(&stream);

    ProtocolHTTP::Request request;
    request.method = "GET";
    request.uri = path;
    request.header.setParam("Connection", "close");
    if (!request.header.setChecked("Host", authority(host, port)) || !http.sendRequest(request)) return false;
    ProtocolHTTP::Reply reply;
    do {
        if (!http.receiveReply(reply) || stream.eof()) return false;  // eof: the head was cut off
    } while (reply.code < 200);                                       // interim answers
    return copyBody(reply, stream, to) && reply.code / 100 == 2;
}

// No blank, which would end the path, and no line end, which would begin a header.
bool isPath(const std::string& text) {
    const auto isVisible = [](char c) { return c > ' ' && c != 0x7F; };
    return text.starts_with('/') && std::all_of(text.begin(), text.end(), isVisible);
}

}  // namespace

int main(int argc, char** argv) try {
    unsigned short port = 0;
    if (argc != 4 || !(std::istringstream(argv[2]) >> port) || !isPath(argv[3])) {
        std::cerr << "usage: http_get HOST PORT PATH\n";
        return 2;
    }
    return get(argv[1], port, argv[3], std::cout) && std::cout.flush() ? 0 : 1;
} catch (const Varnex::Exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
