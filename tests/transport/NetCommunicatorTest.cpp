#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/FailingCall.h>
#include <tests/support/LoopbackPair.h>

#include <gmock/gmock.h>

#include <barrier>
#include <chrono>
#include <csignal>
#include <functional>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <unistd.h>

using Varnex::Client;

const Varnex::Chunk kChunk{"x", 1};
const char* const kOptionRefused = "ERROR: NetCommunicator: cannot set connection option (Input/output error)\n";

TEST(NetCommunicatorFailureTest, EachHasItsResultAndText) {
    int n = 0;
    const auto send = [&](Client& client) { return client.send("x", n = 1) ? 10 + n : n; };
    const auto sendChunk = [&](Client& client) { return client.send(&kChunk, 1, n = 7) ? 10 + n : n; };
    const auto receive = [](Client& client) { return received(client) == "(failed)" ? 0 : 1; };
    const auto wait = [](Client& client) { return client.waitForData(-1); };
    const auto wake = [](Client& client) { return client.breakWait(), 0; };
    const auto close = [](Client& client) { return client.close() + 2 * client.isOpen(); };
    const auto limit = [](Client& client) { return int{client.setSendTimeout(5)}; };
    const auto noDelay = [](Client& client) { return client.setTcpNoDelay(true), int{client.getTcpNoDelay()}; };
    const struct {
        Call call;
        int error, callResult;
        std::function<int(Client&)> operation;
        int result;
        const char* text;
    } cases[] = {
        {Call::send, EIO, -1, send, 0, "ERROR: Cannot send (Input/output error)\n"},
        {Call::send, 0, 0, send, 10, ""},
        {Call::sendmsg, EIO, -1, sendChunk, 0, ""},
        {Call::sendmsg, 0, 0, sendChunk, 0, ""},
        {Call::recv, EIO, -1, receive, 0, "ERROR: Cannot receive (Input/output error)\n"},
        {Call::poll, EBADF, -1, wait, 0, "ERROR: Cannot select\n"},
        {Call::poll, 0, 1, wait, 0, ""},
        {Call::pipe2, EMFILE, -1, wait, 0, "ERROR: Cannot create event\n"},
        {Call::pipe2, EMFILE, -1, wake, 0, "ERROR: Cannot create event\nERROR: Cannot set event\n"},
        {Call::close, EIO, -1, close, 0, "ERROR: While closing (Input/output error)!\n"},
        {Call::close, EINTR, -1, close, 1, ""},
        {Call::setsockopt, EIO, -1, limit, 0, kOptionRefused},
        {Call::setsockopt, EIO, -1, noDelay, 0, "ERROR: NetCommunicator: cannot set tcpNoDelay\n"},
    };
    for (const auto& c : cases) {
        LoopbackPair pair;
        const int descriptor = pair.client.getDescriptor();
        const CapturedDiagnostics printed;
        {
            const FailingCall failing(c.call, c.error, c.callResult);
            EXPECT_EQ(c.operation(pair.client), c.result) << c.text;
        }
        EXPECT_EQ(printed.errors() + printed.output(), c.text);
        if (c.call == Call::close) ::close(descriptor);
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
    EXPECT_FALSE(client.send("x", n = 1));
    std::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(printed.errors(), "ERROR: Cannot send (Broken pipe)\n");
}

TEST_F(NetCommunicatorTest, WaiterAndWakerMayMakeThePipeTogether) {
    for (int round = 0; round < 200; ++round) {
        LoopbackPair fresh;
        std::barrier together(2);
        std::thread waker([&] {
            together.arrive_and_wait();
            fresh.client.breakWait();
        });
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
        const auto time = std::chrono::steady_clock::now() - begin;
        EXPECT_TRUE(time >= std::chrono::milliseconds(20) && time < std::chrono::seconds(30)) << us;
        for (const bool data : {false, true}) {
            std::thread other([&] { data ? static_cast<void>(sends(*pair.peer, "x")) : client.breakWait(); });
            EXPECT_EQ(client.waitForData(-1), data ? 2 : 1);
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
    pair.server.open("127.0.0.1", 0);
    pair.connect();
    ASSERT_GE(many.back().get(), 1024);
    EXPECT_EQ(pair.server.waitForClient(0), 2);
    EXPECT_EQ(client.waitForData(0), 3);
    EXPECT_TRUE(sends(*pair.peer, "x"));
    EXPECT_EQ(client.waitForData(60000), 2);
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
    EXPECT_EQ(printed.errors(), "");
    {
        const FailingCall failing(Call::setsockopt, EIO, -1, 3);
        EXPECT_FALSE(client.setKeepAlive(50) || client.setUserTimeout(6000) || client.setSendTimeout(2500));
    }
    EXPECT_EQ(printed.errors(), std::string(kOptionRefused) + kOptionRefused + kOptionRefused);
    client.setTcpNoDelay(true);
    EXPECT_TRUE(client.getTcpNoDelay());
    for (int round = 0; round < 2; ++round, client.close(), pair.connect()) {
        const int values[] = {option(SOL_SOCKET, SO_KEEPALIVE), option(IPPROTO_TCP, TCP_KEEPIDLE),
                              option(IPPROTO_TCP, TCP_KEEPINTVL), option(IPPROTO_TCP, TCP_USER_TIMEOUT),
                              option(SOL_SOCKET, SO_SNDTIMEO)};
        EXPECT_THAT(values, testing::ElementsAre(1, 40, 10, 5000, 1));  // of the send limit the seconds come first
    }
}
