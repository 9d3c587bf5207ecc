#include <Varnex/protocols/ChunkedReader.h>
#include <Varnex/protocols/ChunkedWriter.h>
#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/streams/ioStream.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Server.h>
#include <tests/support/PeerServers.h>

#include <gmock/gmock.h>

#include <sstream>
#include <thread>

using namespace Varnex;
using Http = ProtocolHTTP;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr int kPatienceMs = 20000;

std::string patterned(std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) text += static_cast<char>(i * 7 + i / 251);
    return text;
}

/// An engine that owns its end of a connection.
struct Engine : Http {
    explicit Engine(std::unique_ptr<Client> opened) : Http(nullptr), client(std::move(opened)) {
        setCommunicator(client.get());
        getStream()->rdbuf()->setDeadline(kPatienceMs);
    }
    ~Engine() override { setStream(nullptr); }

    static bool isChunked(const MessageHeader& header) { return header.getParam("Transfer-Encoding") == "chunked"; }
    std::string body(const MessageHeader& header) {
        if (isChunked(header)) return chunks();
        std::string text(std::stoul(header.getParam("Content-Length", "0")), ' ');
        int length = static_cast<int>(text.size());
        EXPECT_TRUE(receiveBody(reinterpret_cast<unsigned char*>(text.data()), length));
        return text;
    }
    std::string chunks() {
        ChunkedReader reader(*getStream());
        std::ostringstream all;
        all << &reader;
        EXPECT_TRUE(reader.isComplete());
        return all.str() + reader.getTrailer().getParam("x-trailer");
    }

    std::unique_ptr<Client> client;
};

struct Asking : Engine {
    explicit Asking(const PeerServer& peer) : Engine(std::make_unique<Client>()) {
        client->open("127.0.0.1", peer.port());
        request.version = {"HTTP", 1, 1};
        request.header.setParam("Host", "127.0.0.1");
    }
    const Reply& ask(const std::string& method, const std::string& uri) {
        request.method = method;
        request.uri = uri;
        EXPECT_TRUE(sendRequest(request) && receiveReply(reply)) << uri;
        return reply;
    }
    Request request;
    Reply reply;
};

TEST(HttpPeersTest, NginxAnswersManyRequestsOnOneConnection) {
    const TestFolder folder;
    const std::string content = patterned(300000);
    folder.write("file", content);
    const Nginx nginx(folder, "error_page 404 405 /file; location /chunked { alias " + folder.path("file") +
                                  "; ssi on; ssi_types *; add_trailer X-Trailer end; }");
    Asking asking(nginx);
    struct Case {
        std::string method, uri, head;
    };
    const Case cases[] = {{"GET", "/file", "200 OK 300000"},          {"HEAD", "/file", "200 OK 300000"},
                          {"GET", "/chunked", "200 OK chunked"},      {"HEAD", "/chunked", "200 OK "},
                          {"PUT", "/file", "405 Not Allowed 300000"}, {"GET", "/none?a=b", "404 Not Found 300000"},
                          {"GET", "/file", "200 OK 300000"}};
    for (const Case& c : cases) {
        const Http::Reply& reply = asking.ask(c.method, c.uri);
        EXPECT_THAT(std::to_string(reply.code) + " " + reply.phrase + " " +
                        reply.header.getParam("transfer-encoding", reply.header.getParam("content-length")),
                    StartsWith(c.head));
        const std::string whole = content + (Engine::isChunked(reply.header) ? "end" : "");
        const bool isWhole = c.method == "HEAD" || asking.body(reply.header) == whole;
        EXPECT_TRUE(isWhole) << c.uri;
    }
}

TEST(HttpPeersTest, PythonAnswersOnceAndCloses) {
    const TestFolder folder;
    folder.write("file", "content");
    const PythonServer python(folder);
    const std::pair<const char*, const char*> cases[] = {{"/file", "200 content"}, {"/", "file"}, {"/none", "404 "}};
    for (const auto& [uri, expected] : cases) {
        Asking asking(python);
        const Http::Reply& reply = asking.ask("GET", uri);
        EXPECT_EQ(reply.version.minor, 0);
        const std::string text = std::to_string(reply.code) + " " + asking.body(reply.header);
        EXPECT_THAT(text, HasSubstr(expected));
        EXPECT_EQ(asking.getStream()->get(), EOF);
    }
}

/// Answers requests with what they ask, each connection until the client ends it.
class EchoServer {
public:
    EchoServer() {
        server_.open("127.0.0.1", 0);
        thread_ = std::thread([this] { serve(); });
    }
    ~EchoServer() {
        server_.breakWait();
        thread_.join();
    }
    [[nodiscard]] std::string url() const { return "http://127.0.0.1:" + std::to_string(server_.getLocalPort()); }

private:
    void serve() {
        while (server_.waitForClient(-1) == Server::WaitClient) {
            Engine engine{std::unique_ptr<Client>(server_.getClient())};
            for (Http::Request request; engine.receiveRequest(request);) answer(engine, request);
        }
    }
    static void answer(Engine& engine, const Http::Request& request) {
        const bool isContinued = request.header.getParam("Expect") == "100-continue";
        EXPECT_TRUE(!isContinued || engine.sendReply(status(100), MessageHeader()));
        const std::string body = engine.body(request.header);
        const bool isAllowed = request.uri != "/private" || Http::checkAuthorization(request.header, "user", "a:b");
        Http::Reply reply;
        static_cast<Http::StatusLine&>(reply) = status(isAllowed ? 200 : 401);
        reply.body = request.method + request.uri + "|" + Http::createQuery(request.query) + "|" +
                     (isContinued ? "continued|" : "") + body;
        if (request.uri == "/chunked") return sendChunked(engine, reply);
        reply.header.setParam("Content-Length", std::to_string(reply.body.size()));
        if (request.method == "HEAD") reply.body.clear();
        EXPECT_TRUE(engine.sendReply(reply));
    }
    static void sendChunked(Engine& engine, Http::Reply& reply) {
        const std::string body = std::exchange(reply.body, "");
        MessageHeader trailer;
        trailer.setParam("X-Trailer", "end");
        reply.header.setParam("Transfer-Encoding", "chunked");
        EXPECT_TRUE(engine.sendReply(reply));
        ChunkedWriter writer(*engine.getStream(), 100);
        std::ostream(&writer) << body << std::flush << "more";
        EXPECT_TRUE(writer.finish(trailer));
    }
    static Http::StatusLine status(unsigned long code) { return {{"HTTP", 1, 1}, code, Http::getStatusPhrase(code)}; }

    Server server_;
    std::thread thread_;
};

TEST(HttpPeersTest, CurlIsAnswered) {
    const TestFolder folder;
    const std::string content = patterned(300000);
    folder.write("file", content);
    const EchoServer server;
    const std::string url = server.url(), file = "--data-binary @" + folder.path("file");
    // The last two numbers: the status and the connections that were made.
    const std::pair<std::string, std::string> cases[] = {
        {"'" + url + "/a?b=c%20d&e=%3d+'", "GET/a|b=c d&e=%3D |,200,1"},
        {url + "/a " + url + "/b", "GET/a||,200,1GET/b||,200,0"},
        {"-I " + url + "/a " + url + "/b",
         "HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n,200,1"
         "HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n,200,0"},
        {"-0 -d k=v " + url, "POST/||k=v,200,1"},
        {file + " -H 'Expect: 100-continue' " + url, "POST/||continued|" + content + ",200,1"},
        {file + " -H 'Transfer-Encoding: chunked' -H Expect: " + url + " " + url,
         "POST/||" + content + ",200,1POST/||" + content + ",200,0"},
        {file + " " + url + "/chunked " + url + "/chunked",
         "POST/chunked||" + content + "more,200,1POST/chunked||" + content + "more,200,0"},
        {"-u user:a:b " + url + "/private", "GET/private||,200,1"},
        {"-u user:a " + url + "/private", "GET/private||,401,1"}};
    for (const auto& [words, expected] : cases) {
        ChildProcess curl("curl -qsS --noproxy '*' --max-time 20 -w ',%{http_code},%{num_connects}' " + words + " >" +
                          folder.path("answer"));
        EXPECT_EQ(curl.rest(ChildProcess::Error), "");
        EXPECT_EQ(curl.wait(), 0) << words;
        const std::string answer = TestFolder::read(folder.path("answer"));
        EXPECT_TRUE(answer == expected) << words << "\n" << answer.substr(0, 200);
    }
}

}  // namespace
