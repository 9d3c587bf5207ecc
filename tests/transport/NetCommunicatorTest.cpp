#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/FailingCall.h>
#include <tests/support/LoopbackPair.h>

#include <gmock/gmock.h>

#include <barrier>
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

namespace {

int sendOne(Client& client) {
    int n = 1;
    return client.send("x", n) ? n : -1 - n;
}
int sendChunk(Client& client) {
    const Chunk chunk{"x", 1};
    int n = 7;
    return client.send(&chunk, 1, n) ? n : -1 - n;
}
int receiveOne(Client& client) {
    char byte;
    int n = 1;
    return client.receive(&byte, n) ? n : -1;
}

}  // namespace

TEST(NetCommunicatorTest, EachFailureHasItsResultAndText) {
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
        {Call::send, EIO, -1, sendOne, -1, "ERROR: Cannot send (Input/output error)\n"},
        {Call::send, 0, 0, sendOne, 0, ""},
        {Call::sendmsg, EIO, -1, sendChunk, -1, ""},
        {Call::sendmsg, 0, 0, sendChunk, -1, ""},
        {Call::recv, EIO, -1, receiveOne, -1, "ERROR: Cannot receive (Input/output error)\n"},
        {Call::poll, EBADF, -1, wait, 0, "", "ERROR: Cannot select\n"},
        {Call::poll, 0, 1, wait, 0, ""},
        {Call::pipe2, EMFILE, -1, wait, 0, "ERROR: Cannot create event\n"},
        {Call::pipe2, EMFILE, -1, wake, 0, "ERROR: Cannot create event\nERROR: Cannot set event\n"},
        {Call::close, EIO, -1, close, 0, "ERROR: While closing (Input/output error)!\n"},
        {Call::close, EINTR, -1, close, 1, ""},
        {Call::setsockopt, EIO, -1, limit, 0,
         "ERROR: NetCommunicator: cannot set connection options (Input/output error)\n"},
        {Call::setsockopt, EIO, -1, noDelay, 0, "ERROR: NetCommunicator: cannot set tcpNoDelay\n"},
    };
    for (const auto& c : cases) {
        LoopbackPair pair;
        const int descriptor = pair.client.getDescriptor();
        const CapturedDiagnostics printed;
        {
            const FailingCall failing(c.call, c.error, {.result = c.callResult});
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
    EXPECT_EQ(sendChunk(pair.client), -1);
    EXPECT_EQ(printed.errors(), "ERROR: NetCommunicator: cannot get tcpNoDelay\n");
}

TEST(NetCommunicatorTest, AConnectionThatThePeerResetsHasEnded) {
    const CapturedDiagnostics printed;
    LoopbackPair pair;
    const linger abort{1, 0};
    ASSERT_EQ(::setsockopt(pair.peer->getDescriptor(), SOL_SOCKET, SO_LINGER, &abort, sizeof abort), 0);
    pair.peer->close();
    EXPECT_EQ(pair.client.waitForData(60000), 2);
    EXPECT_EQ(receiveOne(pair.client), 0);
    EXPECT_EQ(sendOne(pair.client), -1);
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

TEST(NetCommunicatorTest, AGatheredSendResumesInsideAChunk) {
    LoopbackPair pair;
    const Chunk chunks[] = {{"", 0}, {"abc", 3}, {"def", 3}}, wrong[] = {{"abc", 3}, {"def", -1}};
    const FailingCall partial(Call::sendmsg, 0, {.result = 4});  // pretends that 4 bytes went
    int sent = 0, n = 8;
    char rest[8] = {};
    EXPECT_TRUE(pair.client.send(chunks, 3, sent) && sent == 6);
    EXPECT_TRUE(pair.peer->receive(rest, n));
    EXPECT_STREQ(rest, "ef");
    EXPECT_TRUE(pair.client.send(chunks, 1, sent) && sent == 0);
    EXPECT_FALSE(pair.client.send(wrong, 2, sent));
}

TEST(NetCommunicatorTest, ASendToAPeerThatNeverReadsEndsAtItsLimit) {
    const CapturedDiagnostics printed;
    LoopbackPair pair;
    ASSERT_TRUE(pair.client.setSendTimeout(50));
    const std::string bytes(20000000, 'x');
    int n = 20000000;
    EXPECT_FALSE(pair.client.send(bytes.data(), n));
    EXPECT_THAT(n, testing::AllOf(testing::Gt(0), testing::Lt(20000000)));
    EXPECT_EQ(printed.errors(), "ERROR: Cannot send (Resource temporarily unavailable)\n");
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
    EXPECT_EQ(sendOne(*pair.peer), 1);
    EXPECT_EQ(pair.client.waitForData(60000), 2);
}

TEST(NetCommunicatorTest, OptionsHoldForLaterConnectionsTooUnlessRefused) {
    const CapturedDiagnostics printed;
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
    EXPECT_EQ(printed.errors(), "ERROR: NetCommunicator: cannot set connection options (Invalid argument)\n");
    EXPECT_TRUE(client.setKeepAlive(40) && client.setUserTimeout(5000) && client.setSendTimeout(1500));
    client.setTcpNoDelay(true);
    EXPECT_TRUE(client.getTcpNoDelay());
    for (int round = 0; round < 2; ++round, client.close(), pair.connect()) {
        EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE), 1);
        EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPIDLE), 40);
        EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPINTVL), 10);
        EXPECT_EQ(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 5000);
        EXPECT_EQ(option(SOL_SOCKET, SO_SNDTIMEO), 1);  // the seconds come first
    }
}
