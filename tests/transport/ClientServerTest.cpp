#include <Varnex/transport/IOException.h>
#include <tests/support/LoopbackPair.h>

#include <filesystem>

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
    using Operation = void (*)(Pair&);
    const Operation dial = [](Pair& pair) { pair.client.open(pair.server.getLocalAddress()); };
    const Operation open = [](Pair& pair) { pair.server.open("127.0.0.1", 0); };
    const Operation wait = [](Pair& pair) { static_cast<void>(pair.server.waitForClient(0)); };
    const Operation look = [](Pair& pair) { static_cast<void>(pair.server.isClientWaiting()); };
    const Operation wake = [](Pair& pair) { pair.server.breakWait(); };
    const Operation close = [](Pair& pair) { pair.server.close(); };
    // The call that fails, how, in what, with what text, and how many descriptors fewer there are afterwards.
    const std::tuple<Call, int, int, Operation, const char*, int> cases[] = {
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
    for (const auto& [call, error, result, operation, text, closed] : cases) {
        Pair pair;
        Client next;
        next.open("127.0.0.1", pair.server.getLocalPort());
        const auto before = openDescriptors();
        {
            const FailingCall failing(call, error, result);
            EXPECT_THROWS_TEXT(operation(pair), IOException, text);
        }
        EXPECT_EQ(before - openDescriptors(), closed);
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
    const FailingCall lost(Call::accept4, ECONNABORTED, -1, 2);  // skipped, as are EINTR and EPROTO
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
    EXPECT_THROW(pair.client.open(server), Varnex::Exception);  // which an IOException is, too
    EXPECT_FALSE(pair.client.isOpen());
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
    const char* const denied = "Cannot connect to server (Permission denied)";
    EXPECT_THROWS_TEXT(client.open("", second.getLocalPort()), IOException, denied);
}
