#include <Varnex/transport/IOException.h>
#include <tests/support/LoopbackPair.h>

using Varnex::Client;
using Varnex::IOException;
using Varnex::Server;

TEST(ClientServerTest, ServerWaitsTellWakeUpsFromClientsFromTime) {
    LoopbackPair pair;
    EXPECT_TRUE(pair.server.waitForClient(0) == 2 && !pair.server.isClientWaiting());
    pair.client.open("127.0.0.1", pair.server.getLocalPort());
    pair.server.breakWait();
    EXPECT_EQ(pair.server.waitForClient(60000), 0);
    EXPECT_TRUE(pair.server.waitForClient(-1) == 1 && pair.server.isClientWaiting());
    delete pair.server.getClient();
    std::thread waker([&] { pair.server.breakWait(); });
    EXPECT_EQ(pair.server.waitForClient(-1), 0);
    waker.join();
}

TEST(ClientServerTest, ClosedAndUnknownEndsAreRefused) {
    LoopbackPair pair;
    EXPECT_THROWS_TEXT(pair.server.open("a..b", 1), Varnex::Exception, "Name or service not known");
    EXPECT_THROWS_TEXT(pair.client.open("a..b", 1), Varnex::Exception, "Name or service not known");
    EXPECT_TRUE(sends(pair.client, "x"));  // the earlier connection and the earlier server are still there
    pair.connect();
    const auto server = pair.server.getLocalAddress();
    for (int i = 0; i < 2; ++i) pair.server.close();
    EXPECT_THROWS_TEXT(pair.server.waitForClient(0), IOException, "Invalid socket");
    EXPECT_THROWS_TEXT(pair.server.isClientWaiting(), IOException, "Cannot select");
    EXPECT_THROWS_TEXT(delete pair.server.getClient(), IOException, "Cannot accept client (Bad file descriptor)");
    EXPECT_THROWS_TEXT(pair.client.open(server), IOException, "Cannot connect to server (Connection refused)");
    EXPECT_THROW(pair.client.open(server), Varnex::Exception);  // which an IOException is, too
}

TEST(ClientServerTest, AConnectionAttemptEndsAtItsLimit) {
    Server server;
    server.setBacklog(0);
    server.open("127.0.0.1", 0);
    std::vector<Client> queue(10);
    const auto fillQueue = [&] {
        for (Client& client : queue) client.setConnectTimeout(50), client.open("127.0.0.1", server.getLocalPort());
    };
    EXPECT_THROWS_TEXT(fillQueue(), IOException, "Cannot connect to server (Connection timed out)");
    const std::unique_ptr<Client> peer(server.getClient());
    std::thread answer([&] { EXPECT_TRUE(sends(*peer, "x")); });
    EXPECT_EQ(received(queue.front()), "x");  // the connection blocks as others do
    answer.join();
}

TEST(ClientServerTest, APortIsSharedUnlessItIsSwitchedOffAndTwoColonsServeBothFamilies) {
    Server first, second;
    first.open("", 0);
    EXPECT_EQ(first.getLocalAddress().getHostAddress(), "0.0.0.0");
    second.open("", first.getLocalPort());
    second.setPortSharing(false);
    EXPECT_THROWS_TEXT(second.open("", first.getLocalPort()), IOException, "Cannot open server");
    second.open("::", 0);
    Client client;
    for (const char* host : {"127.0.0.1", "::1"}) {
        client.open(host, second.getLocalPort());
        const std::unique_ptr<Client> accepted(second.getClient());
        EXPECT_EQ(accepted->getRemoteAddress().getServicePort(), client.getLocalAddress().getServicePort());
        EXPECT_EQ(accepted->getLocalAddress().getServicePort(), second.getLocalPort());
        EXPECT_EQ(client.getRemoteAddress().getHostAddress(), host);
    }
    const FailingCall once(Call::connect, ENETUNREACH);  // at 0.0.0.0, so :: is kept
    client.open("", second.getLocalPort());
    EXPECT_EQ(client.getRemoteAddress().getFamily(), AF_INET6);
    const FailingCall both(Call::connect, EACCES, -1, 2);
    EXPECT_THROW(client.open("", second.getLocalPort()), IOException);
}
