#include <Varnex/events/ServerInfoQueryEvent.h>
#include <Varnex/transport/BufferedCommunicator.h>
#include <Varnex/transport/Exception.h>
#include <tests/hub/HubFixture.h>
#include <tests/support/FailingCall.h>
#include <tests/support/NetworkNamespace.h>

#include <cstring>

using Varnex::MultiClient;
using Varnex::MultiServer;

/// In a network of its own, with the group on its loopback interface.
struct DiscoveryTest : testing::Test {
    MultiServer server{0x0F};
    Varnex::Multicast group;
    CapturedDiagnostics printed;

    static void SetUpTestSuite() { ownNetwork = ownNetwork || enterOwnNetwork(); }
    void SetUp() override {
        if (!ownNetwork) GTEST_SKIP() << "the system allows no network namespaces";
        group.setAddress("224.21.12.68");
        group.setInterface(std::string("lo"));
        EXPECT_TRUE(server.setDiscoveryInterface("lo") && group.open());
    }
    static void prepare(MultiClient& client) { EXPECT_TRUE(client.setDiscoveryInterface("lo")); }

    std::unique_ptr<Varnex::Event> next() {
        char bytes[500];
        int n = sizeof bytes;
        Varnex::Event* event = nullptr;
        EXPECT_TRUE(group.waitForData(60000) == 2 && group.receive(bytes, n));
        Varnex::Event::parse(bytes, n, event);
        return std::unique_ptr<Varnex::Event>(event);
    }
    static const Varnex::ServerInfoEvent* asInfo(const std::unique_ptr<Varnex::Event>& event, short status) {
        const auto* const info = dynamic_cast<Varnex::ServerInfoEvent*>(event.get());
        return info != nullptr && info->getStatus() == status ? info : nullptr;
    }
    /// The next announcement with this status.
    Varnex::ServerInfoEvent announced(short status) {
        for (;;)
            if (const auto event = next(); asInfo(event, status)) return *asInfo(event, status);
    }
    /// Whether no such announcement comes before what this sends.
    bool isSilent(short status) {
        Varnex::MessageEvent mark;
        EXPECT_TRUE(mark.send(&group));
        for (;;) {
            const auto event = next();
            if (dynamic_cast<Varnex::MessageEvent*>(event.get())) return true;
            if (asInfo(event, status)) return false;
        }
    }
    void ask(long mask, short id) {
        Varnex::ServerInfoQueryEvent query;
        query.setMask(mask);
        query.setId(id);
        EXPECT_TRUE(query.send(&group));
    }
    void announce(const std::string& host, unsigned short port, short status = 1, short id = 0) {
        Varnex::ServerInfoEvent info;
        info.setStatus(status);
        info.setId(id);
        info.setMask(1);
        info.setHostAddress(host);
        info.setPort(port);
        EXPECT_TRUE(info.send(&group));
    }
    static inline bool ownNetwork = false;
};

TEST_F(DiscoveryTest, AServerAnnouncesAnswersWhoIsMeantAndSaysFarewell) {
    server.setId(40000);
    server.setAnnouncedHost("127.0.0.9");
    ASSERT_TRUE(server.open("127.0.0.1", 0, true) && server.isAnnouncing());
    const auto info = announced(1);
    EXPECT_EQ(info.getHostAddress(), "127.0.0.9");
    EXPECT_EQ(info.getHostName(), Varnex::InetAddress::getLocalHostName());
    EXPECT_TRUE(info.getPort() == server.getLocalPort() && info.getMask() == 0x0F);
    const auto id = static_cast<short>(40000);
    for (const auto& [mask, askedId] : {std::pair<long, short>{0x10, id}, {0x01, 5}, {0, id}}) ask(mask, askedId);
    for (const char* bad : {"", "x", "VX01\0\0\0\x7Fgarbage and more"})
        EXPECT_TRUE(sends(group, std::string(bad, *bad == 'V' ? 24 : std::strlen(bad))));
    ask(0x11, id);
    announced(1);
    EXPECT_TRUE(isSilent(1));  // one answer: the others were not meant
    EXPECT_TRUE(server.close() && announced(3).getPort() == info.getPort() && server.close() && isSilent(3));
    EXPECT_TRUE(server.open("127.0.0.1", 0, false) && !server.isAnnouncing());
    server.close();
    EXPECT_TRUE(isSilent(1));
}

TEST_F(DiscoveryTest, ClientsFindServersInWhateverOrderTheyStart) {
    MultiClient early(1), late(1), stranger(0x10);
    MultiServer second(1);  // of the same host
    second.setDiscoveryInterface("127.0.0.1");
    for (auto* each : {&early, &late, &stranger}) prepare(*each);
    ASSERT_TRUE(early.open() && early.isDiscovering() && stranger.open() && second.open("127.0.0.1", 0, true));
    ASSERT_TRUE(server.open("127.0.0.1", 0, true) && late.open());
    for (auto* each : {&server, &second}) EXPECT_TRUE(eventually([&] { return each->getCount() == 2; }));
    EXPECT_TRUE(eventually([&] { return early.getCount() == 2 && late.getCount() == 2; }));
    // Known by now, under the address that was announced.
    EXPECT_TRUE(early.connectToServer("127.0.0.1", server.getLocalPort()) && early.getCount() == 2);
    EXPECT_EQ(stranger.getCount(), 0);
    int n = 5;
    EXPECT_TRUE(server.send("hello", n) && n == 5);
    Communicator* connection = nullptr;
    EXPECT_TRUE(late.waitForCommunicators() && late.receiveCommunicator(connection));
    EXPECT_EQ(received(*connection), "hello");
    EXPECT_TRUE(late.close() && late.open());
    EXPECT_TRUE(eventually([&] { return late.getCount() == 2; }));
}

TEST_F(DiscoveryTest, HostileAndForeignDatagramsDoNotEndDiscovery) {
    MultiClient client(1);
    prepare(client);
    std::vector<std::string> hosts;
    client.setAcceptAnnouncement([&](const Varnex::ServerInfoEvent& info) {
        hosts.push_back(info.getHostAddress());
        if (info.getHostName() == "throw") throw std::runtime_error("not today");
        return info.getHostAddress() != "127.0.0.3";
    });
    ASSERT_TRUE(server.open("127.0.0.1", 0, false) && client.open());
    for (const char* bad : {"", "VX01", "this datagram is no event at all"}) sends(group, bad);
    announce("127.0.0.2", server.getLocalPort(), 3);
    announce("127.0.0.2", server.getLocalPort(), 1, 7);
    announce("127.0.0.3", server.getLocalPort());
    announce("no.such.host.invalid", 1);
    announce("127.0.0.1", 1);  // refuses
    announce("127.0.0.1", server.getLocalPort());
    EXPECT_TRUE(eventually([&] { return client.getCount() == 1; }));
    EXPECT_THAT(hosts, testing::ElementsAre("127.0.0.3", "no.such.host.invalid", "127.0.0.1", "127.0.0.1"));
    EXPECT_THAT(printed.errors(), testing::HasSubstr("ERROR: Got a datagram that is not one Varnex event\n"));
    client.close();
}

TEST_F(DiscoveryTest, LostServersAreDialledAgainUntilTheyAreGivenUp) {
    MultiClient client(1);
    client.setReconnect(1, 20);
    ASSERT_TRUE(server.open("127.0.0.1", 0, false));
    const auto port = server.getLocalPort();
    EXPECT_TRUE(client.connectToServer("127.0.0.1", port));
    server.close();
    EXPECT_TRUE(eventually([&] { return client.getCount() == 0; }));
    ASSERT_TRUE(server.open("127.0.0.1", port, false));
    EXPECT_TRUE(eventually([&] { return client.getCount() == 1 && server.getCount() == 1; }));
    EXPECT_TRUE(client.disconnectFromServer("127.0.0.1", port) && !client.disconnectFromServer("127.0.0.1", port));
    EXPECT_FALSE(client.disconnectFromServer("no.such.host.invalid", port));
    EXPECT_EQ(client.getCount(), 0);
}

TEST_F(DiscoveryTest, AnAnnouncedLoopbackAddressGivesWayToWhereItCameFrom) {
    ASSERT_TRUE(addLoopbackAddress("10.21.12.68"));
    EXPECT_TRUE(server.setDiscoveryInterface("10.21.12.68"));
    server.setAnnouncedHost("127.0.1.1");
    ASSERT_TRUE(server.open("10.21.12.68", 0, true));
    MultiClient literal(1), wary(1);
    for (auto* each : {&literal, &wary}) prepare(*each);
    wary.setPreferSourceAddress(true);
    EXPECT_TRUE(literal.open() && wary.open());
    EXPECT_TRUE(eventually([&] { return wary.getCount() == 1; }));
    EXPECT_EQ(literal.getCount(), 0);
}

TEST_F(DiscoveryTest, DatagramsGoOutOnEveryInterfaceNamed) {
    Varnex::Multicast both;
    both.setAddress("224.21.12.68");
    EXPECT_FALSE(both.setInterface(std::string("no-such-if")) || both.setInterfaces({}) ||
                 both.setInterfaces({"lo", "x"}));
    EXPECT_TRUE(both.setInterfaces({"lo"}) && both.open());
    EXPECT_TRUE(sends(both, "one"));
    EXPECT_EQ(received(group), "one");
    EXPECT_EQ(group.getLastAddress(), Varnex::InetAddress::getLoopbackAddress());
}

TEST(MultiServerTest, ATakenPortIsToldAndRefusedConnectionsAreClosed) {
    struct Choosy : MultiServer {
        Choosy() : MultiServer(1) { setPortSharing(false); }
        ~Choosy() override { close(); }
        bool addCommunicator(Communicator* c) override { return getCount() < 1 && MultiServer::addCommunicator(c); }
    } server, second;
    const CapturedDiagnostics printed;
    ASSERT_TRUE(server.open("127.0.0.1", 0, false));
    EXPECT_FALSE(second.open("127.0.0.1", server.getLocalPort(), false));
    EXPECT_EQ(printed.errors(), "ERROR: Cannot open server\n");
    Varnex::Client clients[3];
    for (auto& each : clients) each.open("127.0.0.1", server.getLocalPort());
    EXPECT_EQ(received(clients[1]), "");  // closed when the third one came
    EXPECT_TRUE(server.close());
    EXPECT_EQ(received(clients[0]) + received(clients[2]), "");
}

TEST(MultiServerTest, WithoutDescriptorsItPausesAndGoesOn) {
    MultiServer server(1);
    const CapturedDiagnostics printed;
    ASSERT_TRUE(server.open("127.0.0.1", 0, false));
    const FailingCall none(Call::accept4, EMFILE, -1, 3);
    Varnex::Client client;
    client.open("127.0.0.1", server.getLocalPort());
    EXPECT_TRUE(eventually([&] { return server.getCount() == 1; }));
    EXPECT_EQ(printed.errors(), "ERROR: Cannot accept client (Too many open files)\n");
}

TEST(MultiServerTest, OneConnectionTooManyIsClosedAlone) {
    MultiServer server(1);
    server.setMaxConnections(2);
    const CapturedDiagnostics printed;
    ASSERT_TRUE(server.open("127.0.0.1", 0, false));
    Varnex::Client clients[4];
    for (auto& each : clients) each.open("127.0.0.1", server.getLocalPort());
    EXPECT_EQ(received(clients[2]) + received(clients[3]), "");
    EXPECT_TRUE(server.getCount() == 2 && printed.errors() == "ERROR: Too many connections\n");
}

TEST(MultiClientTest, OneConnectionForEachServerByTheFirstAddressThatAnswers) {
    Varnex::Server server;
    server.open("127.0.0.1", 0);
    MultiClient client(1);
    const auto port = server.getLocalPort();
    EXPECT_TRUE(client.connectToServer("localhost", port));  // also where ::1 comes first and refuses
    EXPECT_TRUE(client.connectToServer("127.0.0.1", port) && client.getCount() == 1);
    EXPECT_FALSE(client.connectToServer("no.such.host.invalid", port) || client.connectToServer("127.0.0.1", 1));
    std::unique_ptr<Varnex::Client> accepted(server.getClient());
    EXPECT_TRUE(client.disconnectFromServer("localhost", port));
    EXPECT_EQ(received(*accepted), "");
    EXPECT_TRUE(client.connectToServer("127.0.0.1", port));  // forgotten, so dialled again
    accepted.reset(server.getClient());
    Communicator* const connection = client.getStatus().at(0).connection;
    client.removeCommunicator(connection);
    EXPECT_FALSE(client.disconnectFromServer("127.0.0.1", port));
    delete connection;
}

TEST(MultiClientTest, ADialIntoNowhereEndsWhenTheHubCloses) {
    Varnex::Server full;
    full.setBacklog(0);
    full.open("127.0.0.1", 0);
    std::vector<std::unique_ptr<Varnex::Client>> fill;
    MultiClient client(1);
    client.setConnectTimeout(1);
    while (client.connectToServer("127.0.0.1", full.getLocalPort())) client.close();  // until nothing is answered
    client.setConnectTimeout(0);
    auto dial =
        std::async(std::launch::async, [&] { return client.connectToServer("127.0.0.1", full.getLocalPort()); });
    while (dial.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) client.close();
    EXPECT_FALSE(dial.get());
}
