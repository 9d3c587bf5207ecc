#include "WebFixture.h"

#include <Varnex/streams/ioStream.h>
#include <Varnex/transport/Exception.h>
#include <Varnex/transport/IOException.h>
#include <Varnex/web/WebPageDirectory.h>
#include <Varnex/web/WebStatistics.h>
#include <tests/support/Eventually.h>
#include <tests/support/PeerServers.h>

#include <chrono>
#include <thread>

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

/// The other end of a connection.
struct Peer : Client {
    explicit Peer(const Varnex::Server& server) { open("127.0.0.1", server.getLocalPort()); }
    /// All that comes until this text has, or the end.
    std::string until(const std::string& text) {
        while (all.find(text) == std::string::npos) {
            if (waitForData(20000) != WaitData) break;
            const std::string more = received(*this, 100000);
            if (more.empty()) break;
            all += more;
        }
        const std::size_t at = all.find(text);
        const std::string taken = all.substr(0, at == std::string::npos ? at : at + text.size());
        all.erase(0, taken.size());
        return taken;
    }
    std::string rest() { return until("never comes"); }
    std::string ask(const std::string& path, const std::string& body) {
        EXPECT_TRUE(sends(*this, "GET " + path + " HTTP/1.1\r\n\r\n"));
        return until(body);
    }
    std::string all;
};

template <class Server>
struct WebServersTest : testing::Test {
    WebServersTest() {
        server.addPage("/", page("start."));
        server.addPage("/echo", WebPageCallback(&echo));
        server.addPage("/slow", TestPage([this](WebClient*, const Request&, Reply& reply) {
                           ++slow;
                           return reply.body = "slow.", eventually([this] { return go.load(); });
                       }));
    }
    static constexpr bool kPolled = std::is_same_v<Server, PolledWebServer>;
    CapturedDiagnostics printed;
    std::atomic<int> slow = 0;
    std::atomic<bool> go = false;
    Running<Server> server;
};

using Servers = testing::Types<ThreadedWebServer, PolledWebServer>;
TYPED_TEST_SUITE(WebServersTest, Servers);

TYPED_TEST(WebServersTest, ServesManyConnectionsWithManyRequestsEach) {
    auto& web = this->server;
    web.setMaxClients(8);
    for (int opening = 0; opening < 2; ++opening) {
        web.start();
        std::vector<std::thread> threads;
        for (int i = 0; i < 16; ++i)
            threads.emplace_back([&web] {
                Peer peer(web);
                for (int k = 0; k < 50; ++k) ASSERT_THAT(peer.ask("/", "start."), StartsWith("HTTP/1.1 200 OK\r\n"));
            });
        for (auto& thread : threads) thread.join();
        web.stop();
        EXPECT_EQ(web.getClientCount(), 0);
    }
    EXPECT_EQ(web.getStatistics()->replies[2], 1600U);
    EXPECT_EQ(web.getStatistics()->accepted, 32U);
    EXPECT_EQ(web.getStatistics()->active, 0U);
    EXPECT_EQ(this->printed.errors(), "");
}

TYPED_TEST(WebServersTest, SlowAndSilentPeersAreDroppedAndDelayNobody) {
    auto& web = this->server;
    web.setReceiveTimeout(1);
    web.setRequestTimeout(1);
    web.setKeepAliveTimeout(1);
    web.start();
    Peer silent(web), head(web), body(web), idle(web), honest(web);
    sends(head, "GET / HTTP/1.1\r\nA:");
    sends(body, "POST /echo HTTP/1.1\r\nContent-Length: 5\r\n\r\nab");
    EXPECT_THAT(idle.ask("/", "start."), HasSubstr("200"));
    const auto begin = Clock::now();
    EXPECT_THAT(honest.ask("/", "start."), HasSubstr("200"));
    EXPECT_LT(Clock::now() - begin, 900ms);
    EXPECT_EQ(silent.rest(), "");
    EXPECT_EQ(idle.rest(), "");
    EXPECT_THAT(head.rest(), StartsWith("HTTP/1.1 408 "));
    const std::string late = body.rest();
    EXPECT_TRUE(late.empty() || late.starts_with("HTTP/1.1 408 ")) << late;
}

TYPED_TEST(WebServersTest, APeerThatDoesNotReadDelaysNobodyAndIsDropped) {
    auto& web = this->server;
    const TestFolder folder;
    const std::string large(20'000'000, 'x');
    folder.write("large", large);
    web.addPage("/large", page(large));
    web.addPage("/files/*", WebPageDirectory("/files/", folder.path("")));
    web.setSendTimeout(1);
    web.start();
    Peer body(web), file(web), reader(web);
    sends(body, "GET /large HTTP/1.1\r\n\r\n");
    sends(file, "GET /files/large HTTP/1.1\r\n\r\n");
    for (const char* path : {"/large", "/files/large"}) {
        const std::string got = reader.ask(path, large);
        EXPECT_EQ(got.size() - got.find("\r\n\r\n") - 4, large.size()) << path;
    }
    EXPECT_TRUE(eventually([&] { return web.getStatistics()->active == 1; }));
    EXPECT_LT(body.rest().size(), large.size());
    EXPECT_LT(file.rest().size(), large.size());
}

TYPED_TEST(WebServersTest, ClosingLetsRunningRequestsEndButNotIdleClients) {
    auto& web = this->server;
    web.start();
    Peer running(web);
    std::vector<std::unique_ptr<Peer>> idle;
    for (int i = 0; i < 20; ++i) {
        idle.push_back(std::make_unique<Peer>(web));
        idle.back()->ask("/", "start.");
    }
    sends(running, this->kPolled ? "GET / HTTP/1.1\r\n" : "GET /slow HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(eventually([&] { return this->kPolled ? web.getStatistics()->accepted == 21 : this->slow > 0; }));
    std::thread later([&] {
        for (auto& peer : idle) EXPECT_EQ(peer->rest(), "");
        this->go = true;
        if (this->kPolled) sends(running, "\r\n");
    });
    const auto begin = Clock::now();
    web.stop(10000);
    EXPECT_LT(Clock::now() - begin, 5s);
    later.join();
    EXPECT_THAT(running.rest(), testing::AllOf(StartsWith("HTTP/1.1 200 OK"), HasSubstr("Connection: close")));
    EXPECT_THROW(Peer{web}, IOException);
}

TYPED_TEST(WebServersTest, PagesTakeTheConnectionOver) {
    auto& web = this->server;
    std::atomic<ioStream*> stream = nullptr;
    std::unique_ptr<Communicator> connection;
    std::string unread;
    web.addPage("/stream", TestPage([&](WebClient* client, const Request&, Reply&) {
                    return stream = client->releaseStream(), client->isTakenOver();
                }));
    web.addPage("/connection", TestPage([&](WebClient* client, const Request&, Reply&) {
                    return connection = client->releaseCommunicator(unread), true;
                }));
    web.addPage("/kept", TestPage([&](WebClient* client, const Request&, Reply& reply) {
                    reply.code = 101;
                    reply.header.setParam("Connection", "Upgrade");
                    return client->keepOpen(), true;
                }));
    web.setKeepAliveTimeout(1);
    web.start();
    Peer first(web), second(web), kept(web);
    sends(first, "GET /stream HTTP/1.0\r\n\r\nmore\n");
    sends(second, "GET /connection HTTP/1.1\r\n\r\nunread");
    sends(kept, "GET /kept HTTP/1.0\r\n\r\n");
    const std::string reply = kept.until("\r\n\r\n");
    EXPECT_THAT(reply, testing::AllOf(StartsWith("HTTP/1.1 101 "), HasSubstr("Connection: Upgrade"),
                                      Not(HasSubstr("Content-Length"))));
    EXPECT_TRUE(eventually([&] { return web.getStatistics()->active == 1; }));
    EXPECT_THAT(kept.ask("/", "start."), HasSubstr("200"));
    web.stop();

    const std::unique_ptr<ioStream> owned(stream.load());
    std::string line;
    EXPECT_TRUE(std::getline(*owned, line));
    *owned << "answer " << line << '\n' << std::flush;
    EXPECT_EQ(first.until("\n"), "answer more\n");
    EXPECT_EQ(unread, "unread");
    std::thread breaker([&] { connection->breakWait(); });
    EXPECT_EQ(connection->waitForData(20000), Receiver::WaitBroken);
    breaker.join();
    EXPECT_TRUE(sends(second, "x") && connection->waitForData(20000) == Receiver::WaitData);
    EXPECT_EQ(received(*connection), "x");
    EXPECT_TRUE(sends(*connection, "y"));
    EXPECT_EQ(second.until("y"), "y");
}

TYPED_TEST(WebServersTest, EncryptsWithTls) {
    auto& web = this->server;
    const TestFolder folder;
    Nginx::makeCertificate(folder);
    EXPECT_THROW(web.setTLS(folder.path("key"), folder.path("key")), Varnex::Exception);
    web.setTLS(folder.path("certificate"), folder.path("key"));
    const std::string large(300'000, 'x');
    web.addPage("/large", page(large));
    web.start();
    Peer plain(web), silent(web);
    sends(plain, "GET / HTTP/1.1\r\n\r\n");
    EXPECT_THAT(plain.rest(), Not(HasSubstr("start.")));
    const std::string url = "https://127.0.0.1:" + std::to_string(web.getLocalPort());
    ChildProcess curl("curl -s --cacert " + folder.path("certificate") + " " + url + "/large " + url + "/ -d abc " +
                      url + "/echo");
    EXPECT_EQ(curl.rest(ChildProcess::Output), large + "start.POST /echo [abc]");
    ChildProcess old("curl -s --tls-max 1.1 --cacert " + folder.path("certificate") + " " + url);
    EXPECT_NE(old.wait(), 0);
}

TYPED_TEST(WebServersTest, GoesOnWhenThereAreNoDescriptors) {
    auto& web = this->server;
    web.start();
    {
        const FailingCall failing(Call::accept4, EMFILE, -1, 2);
        Peer peer(web);
        EXPECT_THAT(peer.ask("/", "start."), HasSubstr("200"));
    }
    EXPECT_EQ(this->printed.errors(), "ERROR: Cannot accept client (Too many open files)\n");
}

TYPED_TEST(WebServersTest, LeaksNothingOverManyConnections) {
    auto& web = this->server;
    web.start();
    Peer(web).ask("/", "start.");
    const auto before = openDescriptors();
    for (int i = 0; i < 500; ++i) {
        Peer peer(web);
        if (i % 3 == 0) peer.ask("/", "start.");
        if (i % 3 == 1) sends(peer, "GET / HTTP/1.1\r\n");
    }
    EXPECT_TRUE(eventually([&] { return web.getStatistics()->active == 0; }));
    EXPECT_LE(openDescriptors(), before + 2);
}

TEST(ThreadedWebServerTest, PagesComeAndGoWhileTheyAreServed) {
    Running<ThreadedWebServer> server;
    std::atomic<bool> isStopped = false;
    server.addPage("/", page("start."));
    server.start();
    std::thread changer([&] {
        for (int i = 0; !isStopped; ++i) {
            server.addPage("/", page("start."));
            server.addPage("/a" + std::to_string(i % 10) + "*", page("a"));
            server.removePage("/a" + std::to_string((i + 5) % 10) + "*");
        }
    });
    Peer peer(server);
    for (int i = 0; i < 90; ++i) EXPECT_THAT(peer.ask("/", "start."), HasSubstr("200"));
    isStopped = true;
    changer.join();
}
