#include <tests/support/FailingCall.h>
#include <tests/support/LoopbackPair.h>
#include <tests/support/ThrowsText.h>

#include <Varnex/transport/IOException.h>

#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

#include <sys/resource.h>

using Pair = LoopbackPair;
using Varnex::Client;
using Varnex::IOException;
using Varnex::Server;

static auto openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}
static void acceptOne(Pair& pair) {
    delete pair.server.getClient();
}

TEST(ClientServerTest, EachFailureThrowsItsTextAndLeaksNothing) {
    const auto dial = [](Pair& pair) { pair.client.open(pair.server.getLocalAddress()); };
    const auto open = [](Pair& pair) { pair.server.open("127.0.0.1", 0); };
    const auto wait = [](Pair& pair) { static_cast<void>(pair.server.waitForClient(0)); };
    const auto look = [](Pair& pair) { static_cast<void>(pair.server.isClientWaiting()); };
    const auto wake = [](Pair& pair) { pair.server.breakWait(); };
    const auto close = [](Pair& pair) { pair.server.close(); };
    const struct {
        Call call;
        int error, callResult;
        std::function<void(Pair&)> operation;
        const char* text;
        int closed;  // descriptors fewer afterwards
    } cases[] = {
        {Call::socket, EMFILE, -1, dial, "Cannot open socket (Too many open files)", 1},
        {Call::connect, ENETUNREACH, -1, dial, "Cannot connect to server (Network is unreachable)", 1},
        {Call::getsockname, ENOBUFS, -1, dial, "Cannot get socket name (No buffer space available)", 1},
        {Call::socket, EMFILE, -1, open, "Cannot open server", 1},
        {Call::listen, EADDRINUSE, -1, open, "Cannot listen at socket (Address already in use)", 1},
        {Call::getsockname, ENOBUFS, -1, open, "Cannot get socket name (No buffer space available)", 1},
        {Call::pipe2, EMFILE, -1, wait, "Cannot create pipe", 0},
        {Call::pipe2, EMFILE, -1, wake, "Cannot create pipe", 0},
        {Call::poll, ENOMEM, -1, wait, "Cannot select", -2},
        {Call::poll, 0, 1, wait, "Cannot wait", -2},
        {Call::poll, ENOMEM, -1, look, "Cannot select", 0},
        {Call::accept4, EMFILE, -1, acceptOne, "Cannot accept client (Too many open files)", 0},
        {Call::getsockname, ENOBUFS, -1, acceptOne, "Cannot get socket name (No buffer space available)", 0},
        {Call::close, EIO, -1, close, "Cannot close socket (Input/output error)", 0},
    };
    for (const auto& c : cases) {
        Pair pair;
        Client next;
        next.open("127.0.0.1", pair.server.getLocalPort());
        const auto before = openDescriptors();
        {
            const FailingCall failing(c.call, c.error, c.callResult);
            EXPECT_THROWS_TEXT(c.operation(pair), IOException, c.text);
        }
        EXPECT_EQ(before - openDescriptors(), c.closed);
        pair.server.open("127.0.0.1", 0);
        pair.connect();
    }
}

TEST(ClientServerTest, ServerWaitsTellWakeUpsFromClientsFromTime) {
    Pair pair;
    EXPECT_EQ(pair.server.waitForClient(0), 2);
    EXPECT_FALSE(pair.server.isClientWaiting());
    pair.client.open("127.0.0.1", pair.server.getLocalPort());
    pair.server.breakWait();
    EXPECT_EQ(pair.server.waitForClient(60000), 0);
    EXPECT_EQ(pair.server.waitForClient(-1), 1);
    EXPECT_TRUE(pair.server.isClientWaiting());
    acceptOne(pair);
    std::thread waker([&] { pair.server.breakWait(); });
    EXPECT_EQ(pair.server.waitForClient(-1), 0);
    waker.join();
}

TEST(ClientServerTest, ClosedAndUnknownEndsAreRefused) {
    Pair pair;
    EXPECT_THROWS_TEXT(pair.server.open("a..b", 1), Varnex::Exception, "Name or service not known");
    EXPECT_THROWS_TEXT(pair.client.open("a..b", 1), Varnex::Exception, "Name or service not known");
    EXPECT_TRUE(sends(pair.client, "x"));  // the earlier connection and the earlier server are still there
    pair.connect();
    const auto server = pair.server.getLocalAddress();
    pair.server.close();
    pair.server.close();
    EXPECT_THROWS_TEXT(pair.server.waitForClient(0), IOException, "Invalid socket");
    EXPECT_THROWS_TEXT(pair.server.isClientWaiting(), IOException, "Cannot select");
    EXPECT_THROWS_TEXT(acceptOne(pair), IOException, "Cannot accept client (Bad file descriptor)");
    EXPECT_THROWS_TEXT(pair.client.open(server), IOException, "Cannot connect to server (Connection refused)");
    EXPECT_FALSE(pair.client.isOpen());
}

TEST(ClientServerTest, TheFirstAddressThatConnectsIsKept) {
    Server server;
    server.open("::", 0);
    Client client;
    const FailingCall first(Call::connect, ENETUNREACH);
    client.open("", server.getLocalPort());  // 0.0.0.0 comes before ::
    EXPECT_EQ(client.getRemoteAddress().getFamily(), AF_INET6);
    const FailingCall both(Call::connect, ENETUNREACH, -1, 2);
    const char* const last = "Cannot connect to server (Network is unreachable)";
    EXPECT_THROWS_TEXT(client.open("", server.getLocalPort()), IOException, last);
}

TEST(ClientServerTest, AConnectionAttemptEndsAtItsLimit) {
    Server server;
    server.setBacklog(0);
    server.open("127.0.0.1", 0);
    std::vector<Client> queue(10);
    const auto fillQueue = [&] {
        for (Client& client : queue) {
            client.setConnectTimeout(50);
            client.open("127.0.0.1", server.getLocalPort());
        }
    };
    EXPECT_THROWS_TEXT(fillQueue(), IOException, "Cannot connect to server (Connection timed out)");
    const std::unique_ptr<Client> peer(server.getClient());
    std::thread answer([&] { EXPECT_TRUE(sends(*peer, "x")); });
    EXPECT_EQ(received(queue.front()), "x");  // the connection blocks as others do
    answer.join();
}

TEST(ClientServerTest, AcceptSkipsLostConnectionsAndKeepsThoseItHasNoDescriptorFor) {
    Pair pair;
    for (const int error : {EINTR, ECONNABORTED, EPROTO}) {
        const FailingCall failing(Call::accept4, error, -1, 2);
        EXPECT_NO_THROW(pair.connect()) << error;
    }
    pair.client.open("127.0.0.1", pair.server.getLocalPort());
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none{3, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    std::string text;
    try {
        acceptOne(pair);
    } catch (const IOException& error) {
        ::setrlimit(RLIMIT_NOFILE, &limit);  // first: a sanitizer needs descriptors to look at the object
        text = error.what();
    }
    EXPECT_EQ(text, "Cannot accept client (Too many open files)");
    EXPECT_TRUE(pair.server.isClientWaiting());
    acceptOne(pair);
}

TEST(ClientServerTest, APortIsSharedUnlessItIsSwitchedOffAndTwoColonsServeBothFamilies) {
    Server first, second;
    first.open("", 0);
    EXPECT_EQ(first.getLocalAddress().getHostAddress(), "0.0.0.0");
    second.open("", first.getLocalPort());
    second.setPortSharing(false);
    EXPECT_THROWS_TEXT(second.open("", first.getLocalPort()), IOException, "Cannot open server");
    second.open("::", 0);
    for (const char* host : {"127.0.0.1", "::1"}) {
        Client client;
        client.open(host, second.getLocalPort());
        const std::unique_ptr<Client> accepted(second.getClient());
        EXPECT_EQ(accepted->getRemoteAddress().getServicePort(), client.getLocalAddress().getServicePort());
        EXPECT_EQ(accepted->getLocalAddress().getServicePort(), second.getLocalPort());
        EXPECT_EQ(client.getRemoteAddress().getHostAddress(), host);
    }
}
