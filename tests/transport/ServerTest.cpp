#include <tests/support/FailingCall.h>
#include <tests/support/LoopbackPair.h>
#include <tests/support/ThrowsText.h>

#include <Varnex/transport/IOException.h>

#include <functional>
#include <thread>

#include <sys/resource.h>

using Varnex::Client;
using Varnex::IOException;
using Varnex::Server;

namespace {

void acceptOne(Server& server) {
    delete server.getClient();
}

}  // namespace

TEST(ServerTest, WaitsTellWakeUpsFromClientsFromTime) {
    Server server;
    EXPECT_THROWS_TEXT(server.waitForClient(0), IOException, "Invalid socket");
    server.open("127.0.0.1", 0);
    EXPECT_EQ(server.waitForClient(0), 2);
    EXPECT_FALSE(server.isClientWaiting());
    Client client;
    client.open("127.0.0.1", server.getLocalPort());
    server.breakWait();
    server.breakWait();
    EXPECT_EQ(server.waitForClient(-1), 0);
    EXPECT_EQ(server.waitForClient(60000), 0);
    EXPECT_EQ(server.waitForClient(-1), 1);
    EXPECT_TRUE(server.isClientWaiting());
    server.close();
    server.close();
    EXPECT_THROWS_TEXT(server.waitForClient(0), IOException, "Invalid socket");
    EXPECT_THROWS_TEXT(server.isClientWaiting(), IOException, "Cannot select");
    EXPECT_THROWS_TEXT(acceptOne(server), IOException, "Cannot accept client (Bad file descriptor)");
}

TEST(ServerTest, EachFailureThrowsItsTextAndLeaksNothing) {
    const auto open = [](Server& server) { server.open("127.0.0.1", 0); };
    const auto wait = [](Server& server) { static_cast<void>(server.waitForClient(0)); };
    const auto look = [](Server& server) { static_cast<void>(server.isClientWaiting()); };
    const auto close = [](Server& server) { server.close(); };
    const auto wake = [](Server& server) { server.breakWait(); };
    const struct {
        Call call;
        int error;
        long callResult;
        std::function<void(Server&)> operation;
        const char* text;
        int closed;  // descriptors fewer afterwards
    } cases[] = {
        {Call::pipe2, EMFILE, -1, wait, "Cannot create pipe", 0},
        {Call::pipe2, EMFILE, -1, wake, "Cannot create pipe", 0},
        {Call::poll, ENOMEM, -1, wait, "Cannot select", -2},
        {Call::poll, 0, 1, wait, "Cannot wait", -2},
        {Call::poll, ENOMEM, -1, look, "Cannot select", 0},
        {Call::accept4, EMFILE, -1, acceptOne, "Cannot accept client (Too many open files)", 0},
        {Call::getsockname, ENOBUFS, -1, acceptOne, "Cannot get socket name (No buffer space available)", 0},
        {Call::close, EIO, -1, close, "Cannot close socket (Input/output error)", 0},
        {Call::socket, EMFILE, -1, open, "Cannot open server", 1},
        {Call::bind, EACCES, -1, open, "Cannot open server", 1},
        {Call::listen, EADDRINUSE, -1, open, "Cannot listen at socket (Address already in use)", 1},
        {Call::getsockname, ENOBUFS, -1, open, "Cannot get socket name (No buffer space available)", 1},
    };
    for (const auto& c : cases) {
        LoopbackPair pair;
        Client next;
        next.open("127.0.0.1", pair.server.getLocalPort());
        const auto before = openDescriptors();
        {
            const FailingCall failing(c.call, c.error, {.result = c.callResult});
            EXPECT_THROWS_TEXT(c.operation(pair.server), IOException, c.text);
        }
        EXPECT_EQ(before - openDescriptors(), c.closed);
        pair.server.open("127.0.0.1", 0);
        pair.server.breakWait();
        EXPECT_EQ(pair.server.waitForClient(-1), 0);
    }
}

TEST(ServerTest, AConnectionLostBeforeItIsAcceptedIsSkipped) {
    for (const int error : {EINTR, ECONNABORTED, EPROTO}) {
        LoopbackPair pair;
        const FailingCall failing(Call::accept4, error, {.times = 2});
        EXPECT_NO_THROW(pair.connect()) << error;
    }
}

TEST(ServerTest, WithoutDescriptorsTheClientStaysWaiting) {
    LoopbackPair pair;
    pair.client.open("127.0.0.1", pair.server.getLocalPort());
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none{3, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_THROWS_TEXT(acceptOne(pair.server), IOException, "Cannot accept client (Too many open files)");
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_TRUE(pair.server.isClientWaiting());
    acceptOne(pair.server);
}

TEST(ServerTest, APortIsSharedUnlessItIsSwitchedOff) {
    Server first, second;
    first.open("127.0.0.1", 0);
    second.open("127.0.0.1", first.getLocalPort());
    EXPECT_EQ(second.getLocalPort(), first.getLocalPort());
    second.setPortSharing(false);
    EXPECT_THROWS_TEXT(second.open("127.0.0.1", first.getLocalPort()), IOException, "Cannot open server");
    EXPECT_FALSE(second.isOpen());
}

TEST(ServerTest, TheIPv6WildcardServesBothFamiliesAndTheEmptyHostIsIPv4) {
    Server both, any;
    both.open("::", 0);
    for (const char* host : {"127.0.0.1", "::1"}) {
        Client client;
        client.open(host, both.getLocalPort());
        const std::unique_ptr<Client> accepted(both.getClient());
        EXPECT_EQ(accepted->getRemoteAddress().getServicePort(), client.getLocalAddress().getServicePort());
        EXPECT_EQ(accepted->getLocalAddress().getServicePort(), both.getLocalPort());
        EXPECT_EQ(client.getRemoteAddress().getHostAddress(), host);
    }
    any.open("", 0);
    EXPECT_EQ(any.getLocalAddress().getHostAddress(), "0.0.0.0");
}
