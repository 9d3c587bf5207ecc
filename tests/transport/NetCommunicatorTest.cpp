#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/FailingCall.h>
#include <tests/support/LoopbackPair.h>

#include <gmock/gmock.h>

#include <barrier>
#include <csignal>
#include <functional>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <unistd.h>

using Varnex::Chunk;
using Varnex::Client;

TEST(NetCommunicatorTest, EachFailureHasItsResultAndText) {
    int n = 1;
    char byte = 0;
    const Chunk chunk{"x", 1};
    const auto send = [&](Client& client) { return client.send("x", n = 1) ? 10 + n : n; };
    const auto sendChunk = [&](Client& client) { return client.send(&chunk, 1, n = 7) ? 10 + n : n; };
    const auto receive = [&](Client& client) { return int{client.receive(&byte, n = 1)}; };
    const auto wait = [](Client& client) { return client.waitForData(-1); };
    const auto wake = [](Client& client) { return client.breakWait(), 0; };
    const auto close = [](Client& client) { return client.close() + 2 * client.isOpen(); };
    const auto limit = [](Client& client) { return int{client.setSendTimeout(5)}; };
    const auto noDelay = [](Client& client) { return client.setTcpNoDelay(true), int{client.getTcpNoDelay()}; };
    const struct {
        Call call;
        int error;
        long callResult;
        std::function<int(Client&)> operation;
        int result;
        const char *errors, *output = "";
    } cases[] = {
        {Call::send, EIO, -1, send, 0, "ERROR: Cannot send (Input/output error)\n"},
        {Call::send, 0, 0, send, 10, ""},
        {Call::sendmsg, EIO, -1, sendChunk, 0, ""},
        {Call::sendmsg, 0, 0, sendChunk, 0, ""},
        {Call::recv, EIO, -1, receive, 0, "ERROR: Cannot receive (Input/output error)\n"},
        {Call::poll, EBADF, -1, wait, 0, "", "ERROR: Cannot select\n"},
        {Call::poll, 0, 1, wait, 0, ""},
        {Call::pipe2, EMFILE, -1, wait, 0, "ERROR: Cannot create event\n"},
        {Call::pipe2, EMFILE, -1, wake, 0, "ERROR: Cannot create event\nERROR: Cannot set event\n"},
        {Call::close, EIO, -1, close, 0, "ERROR: While closing (Input/output error)!\n"},
        {Call::close, EINTR, -1, close, 1, ""},
        {Call::setsockopt, EIO, -1, limit, 0,
         "ERROR: NetCommunicator: cannot set connection option (Input/output error)\n"},
        {Call::setsockopt, EIO, -1, noDelay, 0, "ERROR: NetCommunicator: cannot set tcpNoDelay\n"},
    };
    for (const auto& c : cases) {
        LoopbackPair pair;
        const int descriptor = pair.client.getDescriptor();
        const CapturedDiagnostics printed;
        {
            const FailingCall failing(c.call, c.error, c.callResult);
            EXPECT_EQ(c.operation(pair.client), c.result) << c.errors;
        }
        EXPECT_EQ(printed.errors(), c.errors);
        EXPECT_EQ(printed.output(), c.output);
        if (c.call == Call::close) ::close(descriptor);
        if (!pair.client.isOpen()) continue;
        pair.client.breakWait();  // a pipe that could not be made is made on the next need
        EXPECT_EQ(pair.client.waitForData(-1), 1);
    }
}

TEST(NetCommunicatorTest, ClosedAndWronglyTimedUsesFail) {
    const CapturedDiagnostics printed;
    LoopbackPair pair;
    EXPECT_EQ(pair.client.waitForData(-2), 0);
    EXPECT_EQ(printed.output(), "ERROR: Cannot select\n");
    pair.client.close();
    int n = 1;
    EXPECT_FALSE(pair.client.dataAvail(n) || pair.client.waitForData() || pair.client.getTcpNoDelay());
    const Chunk chunk{"x", 1};
    EXPECT_FALSE(pair.client.send(&chunk, 1, n));
    EXPECT_EQ(printed.errors(), "ERROR: NetCommunicator: cannot get tcpNoDelay\n");
}

TEST(NetCommunicatorTest, AConnectionThatThePeerResetsHasEnded) {
    const CapturedDiagnostics printed;
    LoopbackPair pair;
    const linger abort{1, 0};
    ASSERT_EQ(::setsockopt(pair.peer->getDescriptor(), SOL_SOCKET, SO_LINGER, &abort, sizeof abort), 0);
    pair.peer->close();
    EXPECT_EQ(pair.client.waitForData(60000), 2);
    char byte;
    int n = 1;
    EXPECT_TRUE(pair.client.receive(&byte, n) && n == 0);
    std::signal(SIGPIPE, SIG_DFL);
    EXPECT_FALSE(pair.client.send("x", n = 1));
    std::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(printed.errors(), "ERROR: Cannot send (Broken pipe)\n");
}

TEST(NetCommunicatorTest, WaiterAndWakerMayMakeThePipeTogether) {
    LoopbackPair pair;
    for (int round = 0; round < 200; ++round) {
        Client client;
        client.open("127.0.0.1", pair.server.getLocalPort());
        pair.peer.reset(pair.server.getClient());
        std::barrier together(2);
        std::thread waker([&] {
            together.arrive_and_wait();
            client.breakWait();
        });
        together.arrive_and_wait();
        EXPECT_EQ(client.waitForData(60000), 1);
        waker.join();
    }
}

TEST(NetCommunicatorTest, ManyOpenDescriptorsDoNoHarm) {
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    limit.rlim_cur = limit.rlim_max;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    std::vector<Varnex::UniqueFd> many;
    for (int i = 0; i < 1100; ++i) many.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    ASSERT_GE(many.back().get(), 1024);
    LoopbackPair pair;
    EXPECT_EQ(pair.server.waitForClient(0), 2);
    EXPECT_EQ(pair.client.waitForData(0), 3);
    int n = 1;
    EXPECT_TRUE(pair.peer->send("x", n));
    EXPECT_EQ(pair.client.waitForData(60000), 2);
}

TEST(NetCommunicatorTest, OptionsHoldForLaterConnectionsTooUnlessRefused) {
    LoopbackPair pair;
    Client& client = pair.client;
    const auto option = [&](int level, int name) {
        int value = -1;
        socklen_t size = sizeof value;
        return ::getsockopt(client.getDescriptor(), level, name, &value, &size) == 0 ? value : -1;
    };
    EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE), 0);
    EXPECT_FALSE(client.setKeepAlive(-1) || client.setUserTimeout(-1) || client.setSendTimeout(-1));
    EXPECT_FALSE(client.setKeepAlive(40000));
    EXPECT_TRUE(client.setKeepAlive(40) && client.setUserTimeout(5000) && client.setSendTimeout(1500));
    client.setTcpNoDelay(true);
    EXPECT_TRUE(client.getTcpNoDelay());
    for (int round = 0; round < 2; ++round, client.close(), pair.connect()) {
        const int values[] = {option(SOL_SOCKET, SO_KEEPALIVE), option(IPPROTO_TCP, TCP_KEEPIDLE),
                              option(IPPROTO_TCP, TCP_KEEPINTVL), option(IPPROTO_TCP, TCP_USER_TIMEOUT),
                              option(SOL_SOCKET, SO_SNDTIMEO)};
        EXPECT_THAT(values, testing::ElementsAre(1, 40, 10, 5000, 1));  // of the send limit the seconds come first
    }
}
