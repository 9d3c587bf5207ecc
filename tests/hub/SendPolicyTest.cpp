#include <tests/hub/HubFixture.h>

#include <poll.h>

using Varnex::SendPolicy;

constexpr char kFiller = '\xFF';

/// The first connection added never reads until the test does; its socket takes little.
struct SendPolicyTest : HubFixture {
    void use(SendPolicy::WhenFull whenFull, int maxMessages, int maxBytes = 0) {
        hub.setSendPolicy(
            {.mode = SendPolicy::Queue, .whenFull = whenFull, .maxBytes = maxBytes, .maxMessages = maxMessages});
    }
    /// Fills the socket of the first connection, until a message has to wait.
    void stall() {
        const int small = 1 << 16;  // also keeps the system from making room later
        ::setsockopt(far[0]->getDescriptor(), SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
        pollfd socket{static_cast<Varnex::Client*>(near[0])->getDescriptor(), POLLOUT, 0};
        ::setsockopt(socket.fd, SOL_SOCKET, SO_SNDBUF, &small, sizeof small);
        const std::string large(1 << 20, kFiller);
        while (counters().waiting.messages == 0 || ::poll(&socket, 1, 0) == 1)
            if (counters().waiting.messages == 0) broadcast(large);
    }
    Varnex::SendCounters counters(std::size_t i = 0) {
        const auto status = hub.getStatus().at(i).counters;
        EXPECT_EQ(status.offered.messages, status.sent.messages + status.dropped.messages + status.waiting.messages);
        EXPECT_EQ(status.offered.bytes, status.sent.bytes + status.dropped.bytes + status.waiting.bytes);
        return status;
    }
    /// What the first connection gets, but for what stalled it.
    std::string rest() {
        const auto now = counters();
        auto all = receivedAll(*far[0], now.offered.bytes - now.dropped.bytes);
        std::erase(all, kFiller);
        return all;
    }
};

TEST_F(SendPolicyTest, EveryConnectionGetsAllBytesInOrderAndFlushWaitsForThem) {
    use(SendPolicy::DropOldest, 0);
    for (int i = 0; i < 3; ++i) add();
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        const std::string text = std::to_string(i) + ' ';
        EXPECT_TRUE(broadcast(text) && n == static_cast<int>(text.size()));
        expected += text;
    }
    EXPECT_TRUE(hub.flush(60000));
    for (const auto& each : far) EXPECT_EQ(receivedAll(*each, expected.size()), expected);
    EXPECT_EQ(counters(2).sent.bytes, expected.size());
    EXPECT_TRUE(!hub.send(nullptr, n = 1) && n == 0 && broadcast(""));
}

TEST_F(SendPolicyTest, AStalledConnectionLosesTheOldestAndHoldsUpNobody) {
    use(SendPolicy::DropOldest, 4);
    add();
    stall();
    add();
    for (const char c : std::string("abcdef")) {
        broadcast({c});
        EXPECT_EQ(received(*far[1]), std::string{c});
    }
    EXPECT_THAT(rest(), testing::AnyOf("def", "cdef"));  // what stalled it is kept if it was begun
    EXPECT_TRUE(hub.flush(60000));
    EXPECT_EQ(counters().dropped.messages, 3u);
}

TEST_F(SendPolicyTest, OrTheNewestAndWhatNeverFits) {
    use(SendPolicy::DropNewest, 0, (1 << 20) + 3);
    add();
    stall();
    for (const char c : std::string("abcdef")) EXPECT_TRUE(broadcast({c}));
    EXPECT_TRUE(broadcast(std::string(2 << 20, 'x')));
    EXPECT_EQ(rest(), "abc");
    EXPECT_EQ(counters().dropped.messages, 4u);
}

TEST_F(SendPolicyTest, OrIsDisconnected) {
    std::promise<Varnex::LostReason> lost;
    hub.setLostCallback([&](Communicator*, Varnex::LostReason reason) { lost.set_value(reason); });
    use(SendPolicy::Disconnect, 2);
    auto* const connection = add();
    CapturedDiagnostics quiet;
    while (broadcast(std::string(1 << 20, '.'))) std::this_thread::yield();
    EXPECT_EQ(lost.get_future().get(), Varnex::LostReason::QueueFull);
    EXPECT_TRUE(counters().waiting.messages == 0 && counters().waiting.bytes == 0);
    EXPECT_EQ(next(), connection);
    EXPECT_EQ(received(*connection), "");
    EXPECT_TRUE(!broadcast("more") && hub.flush(0) && hub.dropCommunicator(connection));
}

TEST_F(SendPolicyTest, AFailingConnectionIsGivenUpAndOthersGoOn) {
    CapturedDiagnostics quiet;
    use(SendPolicy::DropOldest, 0);
    add();
    add();
    far[0]->close();
    EXPECT_TRUE(eventually([&] { return !broadcast("x"); }));
    const auto sent = counters(1).offered.bytes;
    EXPECT_EQ(receivedAll(*far[1], sent), std::string(sent, 'x'));
}
