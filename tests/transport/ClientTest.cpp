#include <tests/support/FailingCall.h>
#include <tests/support/LoopbackPair.h>
#include <tests/support/ThrowsText.h>

#include <Varnex/transport/IOException.h>

#include <vector>

using Varnex::Client;
using Varnex::IOException;

TEST(ClientTest, AFailureThrowsItsTextAndLeavesTheClientClosed) {
    const struct {
        Call call;
        int error;
        const char* text;
    } cases[] = {
        {Call::socket, EMFILE, "Cannot open socket (Too many open files)"},
        {Call::connect, ENETUNREACH, "Cannot connect to server (Network is unreachable)"},
        {Call::getsockname, ENOBUFS, "Cannot get socket name (No buffer space available)"},
    };
    for (const auto& c : cases) {
        LoopbackPair pair;
        const auto before = openDescriptors();
        {
            const FailingCall failing(c.call, c.error);
            EXPECT_THROWS_TEXT(pair.client.open(pair.server.getLocalAddress()), IOException, c.text);
        }
        EXPECT_FALSE(pair.client.isOpen());
        EXPECT_EQ(openDescriptors(), before - 1);  // the earlier connection is closed, nothing else stays
        pair.client.open(pair.server.getLocalAddress());
        EXPECT_EQ(pair.client.getRemoteAddress().getServicePort(), pair.server.getLocalPort());
    }
}

TEST(ClientTest, RefusedAndUnresolvedHostsThrow) {
    LoopbackPair pair;
    const unsigned short port = pair.server.getLocalPort();
    pair.server.close();
    EXPECT_THROWS_TEXT(pair.client.open("127.0.0.1", port), IOException,
                       "Cannot connect to server (Connection refused)");
    EXPECT_FALSE(pair.client.isOpen());
    EXPECT_THROWS_TEXT(pair.client.open("a..b", port), Varnex::Exception, "Name or service not known");
    EXPECT_THROWS_TEXT(pair.server.open("a..b", 0), Varnex::Exception, "Name or service not known");
}

TEST(ClientTest, TheFirstAddressThatConnectsIsKept) {
    Varnex::Server server;
    server.open("::1", 0);
    Client client;
    client.open("", server.getLocalPort());  // 0.0.0.0, which nobody serves, comes before ::
    EXPECT_EQ(client.getRemoteAddress().getFamily(), AF_INET6);
    const FailingCall failing(Call::connect, ENETUNREACH, {.times = 2});
    EXPECT_THROWS_TEXT(client.open("", server.getLocalPort()), IOException,
                       "Cannot connect to server (Network is unreachable)");
}

TEST(ClientTest, AConnectionAttemptEndsAtItsLimit) {
    Varnex::Server server;
    server.setBacklog(0);
    server.open("127.0.0.1", 0);
    std::vector<std::unique_ptr<Client>> queued;
    const auto fillQueue = [&] {
        for (int i = 0; i < 10; ++i) {
            queued.push_back(std::make_unique<Client>());
            queued.back()->setConnectTimeout(50);
            queued.back()->open("127.0.0.1", server.getLocalPort());
        }
    };
    EXPECT_THROWS_TEXT(fillQueue(), IOException, "Cannot connect to server (Connection timed out)");
    EXPECT_GT(queued.size(), 1u);
    const std::unique_ptr<Client> peer(server.getClient());
    int n = 1;
    char byte = 0;
    EXPECT_TRUE(peer->send("x", n) && queued.front()->receive(&byte, n) && byte == 'x');  // blocking again
}
