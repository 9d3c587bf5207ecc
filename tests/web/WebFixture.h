#pragma once

#include <Varnex/web/PolledWebServer.h>
#include <Varnex/web/ThreadedWebServer.h>
#include <Varnex/web/WebClient.h>
#include <Varnex/web/WebPageCallback.h>
#include <Varnex/web/WebPageStatic.h>
#include <tests/support/LoopbackPair.h>
#include <tests/support/Scripted.h>

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <thread>
#include <type_traits>

using namespace Varnex;
using Request = ProtocolHTTP::Request;
using Reply = ProtocolHTTP::Reply;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// A page that does what a test says.
struct TestPage : WebPage {
    using Function = std::function<bool(WebClient*, const Request&, Reply&)>;
    explicit TestPage(Function made) : function(std::move(made)) {}
    using WebPage::create;
    bool create(WebClient* client, const Request& request, Reply& reply) override {
        return function(client, request, reply);
    }
    TestPage* clone() const override { return new TestPage(*this); }
    Function function;
};

/// A page with this body.
inline TestPage page(const std::string& body) {
    return TestPage([body](WebClient*, const Request&, Reply& reply) { return reply.body = body, true; });
}

/// A page that tells what the request holds.
inline bool echo(const Request& request, Reply& reply) {
    reply.body = request.method + " " + request.uri + " [" + request.body + "]";
    return true;
}

/// Serves connections that consist of the bytes which they send; polled, so that all happens on the test's thread.
struct MemoryServer : PolledWebServer {
    struct Connection : ScriptedCommunicator {
        explicit Connection(MemoryServer& owner) : server(owner) {}
        ~Connection() override { server.sent = taken; }
        MemoryServer& server;
    };

    /// All that is sent to a peer that sends this and then ends.
    std::string answer(const std::string& bytes, std::vector<std::size_t> pieces = {}) {
        auto connection = std::make_unique<Connection>(*this);
        connection->bytes = bytes;
        connection->pieceSizes = std::move(pieces);
        return answer(std::move(connection));
    }
    std::string answer(std::unique_ptr<Connection> connection) {
        addClient(connection.release());
        for (int turn = 0; turn < 10000 && getClientCount() > 0; ++turn) update();
        EXPECT_EQ(getClientCount(), 0);
        constexpr std::string_view kDate = "Date: ";
        for (std::size_t at = 0; (at = sent.find(kDate, at)) != std::string::npos; at += kDate.size())
            sent.replace(at + kDate.size(), sent.find('\r', at) - at - kDate.size(), "now");
        return sent;
    }

    std::string sent;
};

/// A whole reply as it is sent, but for its date.
inline std::string replyText(const std::string& status, const std::string& header, const std::string& body,
                             const std::string& connection = "Keep-Alive") {
    return "HTTP/1.1 " + status + "\r\n" + header + "Content-Length: " + std::to_string(body.size()) +
           "\r\nDate: now\r\nConnection: " + connection + "\r\n\r\n" + body;
}

/// A server that runs on a free port; the polled kind on a thread of the test's.
template <class Server>
struct Running : Server {
    ~Running() override { stop(); }
    void start() {
        this->open("127.0.0.1", 0);
        isStopped = false;
        if constexpr (std::is_same_v<Server, PolledWebServer>)
            loop = std::thread([this] {
                while (!isStopped) {
                    this->wait(-1);
                    this->update();
                }
            });
    }
    /// As the thread that owns it does it.
    void stop(int ms = 0) {
        isStopped = true;
        if constexpr (std::is_same_v<Server, PolledWebServer>) {
            if (loop.joinable()) this->breakWait(), loop.join();
        }
        this->close(ms);
    }
    std::atomic<bool> isStopped = true;
    std::thread loop;
};
