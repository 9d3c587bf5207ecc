#include <tests/support/LoopbackPair.h>

#include <atomic>
#include <chrono>
#include <csignal>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>

struct NetCommunicatorTest : testing::Test {
    LoopbackPair pair;
    Varnex::Client& client = pair.client;
    const CapturedDiagnostics printed;
    int n = 1;
};

TEST_F(NetCommunicatorTest, ClosedAndWronglyTimedUsesFail) {
    EXPECT_EQ(client.waitForData(-2), 0);
    EXPECT_EQ(printed.output(), "ERROR: Cannot select\n");
    client.close();
    const Varnex::Chunk chunk{"x", 1};
    EXPECT_FALSE(client.dataAvail(n) || client.waitForData() || client.getTcpNoDelay() || client.send(&chunk, 1, n));
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
        std::atomic<int> ready = 0;
        const auto together = [&] {
            for (++ready; ready < 2;) std::this_thread::yield();
        };
        std::thread waker([&] { together(), fresh.client.breakWait(); });
        together();
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
    const rlimit limit{2000, 2000};
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
    const auto check = [&](int level, int name, int expected) {
        int value = -1;
        socklen_t size = sizeof value;
        EXPECT_EQ(::getsockopt(client.getDescriptor(), level, name, &value, &size), 0);
        EXPECT_EQ(value, expected) << name;
    };
    check(SOL_SOCKET, SO_KEEPALIVE, 0);
    EXPECT_TRUE(client.setKeepAlive(40) && client.setUserTimeout(5000) && client.setSendTimeout(1500));
    EXPECT_FALSE(client.setKeepAlive(-1) || client.setUserTimeout(-1) || client.setSendTimeout(-1));
    EXPECT_FALSE(client.setKeepAlive(32768) || Varnex::Client().setKeepAlive(32768));
    {
        const FailingCall failing(Call::setsockopt, EIO, -1, 3);
        EXPECT_FALSE(client.setKeepAlive(50) || client.setUserTimeout(6000) || client.setSendTimeout(2500));
    }
    client.setTcpNoDelay(true);
    EXPECT_TRUE(client.getTcpNoDelay());
    for (int round = 0; round < 2; ++round, client.close(), pair.connect()) {
        check(SOL_SOCKET, SO_KEEPALIVE, 1);
        check(IPPROTO_TCP, TCP_KEEPIDLE, 40);
        check(IPPROTO_TCP, TCP_KEEPINTVL, 10);
        check(IPPROTO_TCP, TCP_USER_TIMEOUT, 5000);
        check(SOL_SOCKET, SO_SNDTIMEO, 1);  // the seconds come first
    }
}

TEST_F(NetCommunicatorTest, AShutDownSendEndsThePeersStreamAndReceivingGoesOn) {
    EXPECT_TRUE(pair.client.shutdownSend());
    EXPECT_EQ(received(*pair.peer), "");
    EXPECT_TRUE(sends(*pair.peer, "x"));
    EXPECT_EQ(received(pair.client), "x");
    EXPECT_FALSE(Varnex::Client().shutdownSend());
}
