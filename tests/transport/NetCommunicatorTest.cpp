#include <tests/support/LoopbackPair.h>

#include <gmock/gmock.h>

#include <barrier>
#include <chrono>
#include <csignal>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <unistd.h>

using Varnex::Client;

const Varnex::Chunk kChunk{"x", 1};
const std::string kOptionRefused = "ERROR: NetCommunicator: cannot set connection option (Input/output error)\n";

TEST(NetCommunicatorFailureTest, EachHasItsResultAndText) {
    using Operation = int (*)(Client&, int& n);
    const Operation send = [](Client& client, int& n) { return client.send("x", n) ? 10 + n : n; };
    const Operation chunk = [](Client& client, int& n) { return client.send(&kChunk, 1, n) ? 10 + n : n; };
    const Operation receive = [](Client& client, int&) { return received(client) == "x" ? 1 : 0; };
    const Operation wait = [](Client& client, int&) { return client.waitForData(-1); };
    const Operation wake = [](Client& client, int&) { return client.breakWait(), 0; };
    const Operation close = [](Client& client, int&) { return client.close() + 2 * client.isOpen(); };
    const Operation limit = [](Client& client, int&) { return int{client.setSendTimeout(5)}; };
    const Operation noDelay = [](Client& c, int&) { return c.setTcpNoDelay(true), int{c.getTcpNoDelay()}; };
    const std::tuple<Call, int, int, Operation, int, std::string> cases[] = {
        {Call::send, EIO, -1, send, 0, "ERROR: Cannot send (Input/output error)\n"},
        {Call::send, EINTR, -1, send, 11, ""},
        {Call::send, 0, 0, send, 10, ""},
        {Call::sendmsg, EIO, -1, chunk, 0, ""},
        {Call::sendmsg, EINTR, -1, chunk, 11, ""},
        {Call::sendmsg, 0, 0, chunk, 0, ""},
        {Call::recv, EIO, -1, receive, 0, "ERROR: Cannot receive (Input/output error)\n"},
        {Call::recv, EINTR, -1, receive, 1, ""},
        {Call::poll, EBADF, -1, wait, 0, "ERROR: Cannot select\n"},
        {Call::poll, 0, 1, wait, 0, ""},
        {Call::pipe2, EMFILE, -1, wait, 0, "ERROR: Cannot create event\n"},
        {Call::pipe2, EMFILE, -1, wake, 0, "ERROR: Cannot create event\nERROR: Cannot set event\n"},
        {Call::close, EIO, -1, close, 0, "ERROR: While closing (Input/output error)!\n"},
        {Call::close, EINTR, -1, close, 1, ""},
        {Call::setsockopt, EIO, -1, limit, 0, kOptionRefused},
        {Call::setsockopt, EIO, -1, noDelay, 0, "ERROR: NetCommunicator: cannot set tcpNoDelay\n"},
    };
    for (const auto& [call, error, callResult, operation, result, text] : cases) {
        LoopbackPair pair;
        EXPECT_TRUE(sends(*pair.peer, "x"));
        const int descriptor = pair.client.getDescriptor();
        const CapturedDiagnostics printed;
        {
            const FailingCall failing(call, error, callResult);
            int n = 1;
            EXPECT_EQ(operation(pair.client, n), result) << text;
        }
        EXPECT_EQ(printed.errors() + printed.output(), text);
        if (call == Call::close) ::close(descriptor);
        if (!pair.client.isOpen()) continue;
        pair.client.breakWait();  // a pipe that could not be made is made on the next need
        EXPECT_EQ(pair.client.waitForData(-1), 1);
    }
}

struct NetCommunicatorTest : testing::Test {
    LoopbackPair pair;
    Client& client = pair.client;
    const CapturedDiagnostics printed;
    int n = 1;
};

TEST_F(NetCommunicatorTest, ClosedAndWronglyTimedUsesFail) {
    EXPECT_EQ(client.waitForData(-2), 0);
    EXPECT_EQ(printed.output(), "ERROR: Cannot select\n");
    client.close();
    EXPECT_FALSE(client.dataAvail(n) || client.waitForData() || client.getTcpNoDelay() || client.send(&kChunk, 1, n));
    EXPECT_EQ(printed.errors(), "ERROR: NetCommunicator: cannot get tcpNoDelay\n");
}

TEST_F(NetCommunicatorTest, AConnectionThatThePeerResetsHasEnded) {
    const linger abort{1, 0};
    ASSERT_EQ(::setsockopt(pair.peer->getDescriptor(), SOL_SOCKET, SO_LINGER, &abort, sizeof abort), 0);
    pair.peer->close();
    EXPECT_EQ(client.waitForData(60000), 2);
    EXPECT_EQ(received(client), "");
    std::signal(SIGPIPE, SIG_DFL);
    EXPECT_FALSE(client.send("x", n));
    std::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(printed.errors(), "ERROR: Cannot send (Broken pipe)\n");
}

TEST_F(NetCommunicatorTest, WaiterAndWakerMayMakeThePipeTogether) {
    for (int round = 0; round < 200; ++round) {
        LoopbackPair fresh;
        std::barrier together(2);
        std::thread waker([&] { together.arrive_and_wait(), fresh.client.breakWait(); });
        together.arrive_and_wait();
        EXPECT_EQ(fresh.client.waitForData(60000), 1);
        waker.join();
    }
}

TEST_F(NetCommunicatorTest, ASpinningWaitEndsByTimeByWakeUpsAndByData) {
    for (const int us : {-60000000, 1, 60000000}) {
        client.setSpinTime(us);
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(client.waitForData(20), 3);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        EXPECT_TRUE(time.count() >= 0.02 && time.count() < 30) << us;
        for (const int result : {1, 2}) {
            std::thread other([&] { result == 1 ? client.breakWait() : void(sends(*pair.peer, "x")); });
            EXPECT_EQ(client.waitForData(-1), result);
            other.join();
        }
        EXPECT_EQ(received(client), "x");
    }
}

TEST_F(NetCommunicatorTest, ManyOpenDescriptorsDoNoHarm) {
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    limit.rlim_cur = limit.rlim_max;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    std::vector<Varnex::UniqueFd> many;
    for (int i = 0; i < 1100; ++i) many.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    LoopbackPair late;
    ASSERT_GE(late.client.getDescriptor(), 1024);
    EXPECT_EQ(late.server.waitForClient(0), 2);
    EXPECT_EQ(late.client.waitForData(0), 3);
    EXPECT_TRUE(sends(*late.peer, "x"));
    EXPECT_EQ(late.client.waitForData(60000), 2);
}

TEST_F(NetCommunicatorTest, OptionsHoldForLaterConnectionsTooUnlessRefused) {
    const auto option = [&](int level, int name) {
        int value = -1;
        socklen_t size = sizeof value;
        return ::getsockopt(client.getDescriptor(), level, name, &value, &size) == 0 ? value : -1;
    };
    EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE), 0);
    EXPECT_TRUE(client.setKeepAlive(40) && client.setUserTimeout(5000) && client.setSendTimeout(1500));
    EXPECT_FALSE(client.setKeepAlive(-1) || client.setUserTimeout(-1) || client.setSendTimeout(-1));
    EXPECT_FALSE(client.setKeepAlive(32768));
    {
        const FailingCall failing(Call::setsockopt, EIO, -1, 3);
        EXPECT_FALSE(client.setKeepAlive(50) || client.setUserTimeout(6000) || client.setSendTimeout(2500));
    }
    EXPECT_EQ(printed.errors(), kOptionRefused + kOptionRefused + kOptionRefused);
    client.setTcpNoDelay(true);
    EXPECT_TRUE(client.getTcpNoDelay());
    for (int round = 0; round < 2; ++round, client.close(), pair.connect()) {
        const int values[] = {option(SOL_SOCKET, SO_KEEPALIVE), option(IPPROTO_TCP, TCP_KEEPIDLE),
                              option(IPPROTO_TCP, TCP_KEEPINTVL), option(IPPROTO_TCP, TCP_USER_TIMEOUT),
                              option(SOL_SOCKET, SO_SNDTIMEO)};
        EXPECT_THAT(values, testing::ElementsAre(1, 40, 10, 5000, 1));  // of the send limit the seconds come first
    }
}
