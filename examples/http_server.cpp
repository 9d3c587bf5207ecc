// http_server PORT [CONNECTIONS [SECONDS]]: answers /query?NAME=VALUE&... with the parameters and /count?to=N with the
// numbers up to N, eight clients at a time; port 0: the system chooses one. Ends after so many connections. A client
// has so many seconds (60) for each request with its answer.
#include <Varnex/protocols/ChunkedWriter.h>
#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/streams/ioStream.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Exception.h>
#include <Varnex/transport/Server.h>

#include <ctime>
#include <future>
#include <iostream>
#include <limits>
#include <memory>
#include <mutex>
#include <sstream>
#include <vector>

using Varnex::ProtocolHTTP;

namespace {

constexpr int kThreads = 8;
constexpr unsigned long kMaxCount = 1'000'000;
constexpr int kMaxUnread = 65536, kUnreadMs = 1000;

bool isModern(const ProtocolHTTP::Version& version) {
    return version.major == 1 && version.minor >= 1;
}

// A body is nothing that this server reads, so what follows one cannot be found.
bool keepsOpen(const ProtocolHTTP::Request& request) {
    const bool hasBody = request.header.hasParam("Content-Length") || request.header.hasParam("Transfer-Encoding");
    return !request.method.empty() && isModern(request.version) && !hasBody &&
           request.header.getParam("Connection", "keep-alive") == "keep-alive";
}

ProtocolHTTP::Reply makeReply(const ProtocolHTTP::Request& request, unsigned long code) {
    ProtocolHTTP::Reply reply;
    if (request.version.isSimple()) reply.version = request.version;
    reply.code = code;
    reply.phrase = ProtocolHTTP::getStatusPhrase(code);
    reply.header.setParam("Date", ProtocolHTTP::createTimestamp(std::time(nullptr)));
    reply.header.setParam("Content-Type", "text/plain");
    if (code == 405) reply.header.setParam("Allow", "GET");
    if (!keepsOpen(request)) reply.header.setParam("Connection", "close");
    return reply;
}

bool sendText(ProtocolHTTP& http, ProtocolHTTP::Reply reply, const std::string& text) {
    reply.header.setParam("Content-Length", std::to_string(text.size()));
    reply.body = text;
    return http.sendReply(reply);
}

bool sendParams(ProtocolHTTP& http, const ProtocolHTTP::Request& request) {
    std::string text;
    for (const auto& [name, value] : request.query.params()) text += name + " = " + value + '\n';
    return sendText(http, makeReply(request, 200), text);
}

// As if nobody knew how long that becomes. A peer of HTTP/1.0 reads up to the end of the connection.
bool sendNumbers(ProtocolHTTP& http, const ProtocolHTTP::Request& request) {
    const auto last = ProtocolHTTP::parseNumber(request.query.getParam("to"), ',');
    if (last.size() != 1 || last[0] > kMaxCount) return sendText(http, makeReply(request, 400), "");
    ProtocolHTTP::Reply reply = makeReply(request, 200);
    const bool isChunked = isModern(request.version);
    if (isChunked) reply.header.setParam("Transfer-Encoding", "chunked");
    if (!http.sendReply(reply, reply.header)) return false;

    Varnex::ChunkedWriter chunks(*http.getStream());
    std::ostream body(http.getStream()->rdbuf());
    if (isChunked) body.rdbuf(&chunks);
    for (unsigned long n = 1; n <= last[0] && body; ++n) body << std::to_string(n) + '\n';
    return body.flush() && (!isChunked || chunks.finish());
}

bool answer(ProtocolHTTP& http, const ProtocolHTTP::Request& request) {
    if (request.method.empty()) return sendText(http, makeReply(request, 400), "");
    if (request.method != "GET") return sendText(http, makeReply(request, 405), "");
    if (request.uri == "/query") return sendParams(http, request);
    if (request.uri == "/count") return sendNumbers(http, request);
    return sendText(http, makeReply(request, 404), "");
}

void serve(Varnex::Client& client, int ms) {
    client.setSendTimeout(ms);  // for a client that does not read
    Varnex::ioStream stream(&client, false);
    ProtocolHTTP http(&stream);
    for (bool isKept = true; isKept;) {
        stream.rdbuf()->setDeadline(ms);  // for one that trickles: its request, and the answer
        ProtocolHTTP::Request request;
        if (!http.receiveRequest(request)) request = {};
        if (stream.eof()) return;  // between requests, or in the middle of one
        stream.clear();            // what is no request is answered, too
        isKept = answer(http, request) && keepsOpen(request);
    }
    // Closing with bytes unread could take the answer away from the client.
    client.shutdownSend();
    stream.rdbuf()->setDeadline(kUnreadMs);
    stream.ignore(kMaxUnread);
}

// The next connection goes to the thread that has done with its last one.
class Connections {
public:
    Connections(Varnex::Server& server, unsigned long count) : server_(server), left_(count) {}

    // Null: those were all.
    std::unique_ptr<Varnex::Client> next() {
        const std::lock_guard lock(mutex_);
        if (left_ == 0) return nullptr;
        --left_;
        return std::unique_ptr<Varnex::Client>(server_.getClient());
    }

private:
    std::mutex mutex_;
    Varnex::Server& server_;
    unsigned long left_;
};

bool isNumber(const char* text, auto& number) {
    return static_cast<bool>(std::istringstream(text) >> number);
}

}  // namespace

int main(int argc, char** argv) try {
    unsigned short port = 0, seconds = 60;
    auto count = std::numeric_limits<unsigned long>::max();
    if (argc < 2 || argc > 4 || !isNumber(argv[1], port) || (argc > 2 && !isNumber(argv[2], count)) ||
        (argc > 3 && !isNumber(argv[3], seconds))) {
        std::cerr << "usage: http_server PORT [CONNECTIONS [SECONDS]]\n";
        return 2;
    }
    Varnex::Server server;
    server.open("127.0.0.1", port);
    std::cout << "listening on port " << server.getLocalPort() << std::endl;
    Connections connections(server, count);
    std::vector<std::future<void>> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.push_back(std::async(std::launch::async, [&] {
            while (const auto client = connections.next()) serve(*client, seconds * 1000);
        }));
    for (auto& thread : threads) thread.get();
} catch (const Varnex::Exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
