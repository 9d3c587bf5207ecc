#include <Varnex/hub/CommThread.h>
#include <tests/hub/HubFixture.h>
#include <tests/support/Scripted.h>

#include <semaphore>

/// Nothing ever arrives; sends take at most `takes` bytes, or fail.
struct DeafConnection : ScriptedCommunicator {
    int takes;
    bool* deleted;
    std::counting_semaphore<> broken{0};

    explicit DeafConnection(int takesAtMost, bool* flag = nullptr) : takes(takesAtMost), deleted(flag) {
        stalls = true;
    }
    ~DeafConnection() override {
        if (deleted != nullptr) *deleted = true;
    }
    using Sender::send;
    bool send(const void* data, int& n) override {
        n = std::min(n, takes);
        if (n > 0) taken.append(static_cast<const char*>(data), static_cast<std::size_t>(n));
        return takes >= 0;
    }
    bool waitForData() override { return broken.acquire(), false; }
    int waitForData(int) override { return broken.try_acquire() ? 1 : 3; }
    void breakWait() override { broken.release(); }
};

using MultiCommunicatorTest = HubFixture;

TEST_F(MultiCommunicatorTest, ABroadcastReachesAllAndTellsTheSmallestLength) {
    EXPECT_TRUE(broadcast("nobody") && n == 6);
    auto* const ten = new DeafConnection(10);
    auto* const four = new DeafConnection(4);
    hub.addCommunicator(ten);
    hub.addCommunicator(four);
    EXPECT_TRUE(broadcast("0123456789") && n == 4);
    hub.addCommunicator(new DeafConnection(-1));
    auto* const last = new DeafConnection(99);
    hub.addCommunicator(last);
    EXPECT_TRUE(!broadcast("abc") && n == -1);
    const Varnex::Chunk chunks[] = {{"x", 1}, {"", 0}, {"yz", 2}};
    EXPECT_FALSE(hub.send(chunks, 3, n));
    EXPECT_EQ(ten->taken, "0123456789abcxyz");
    EXPECT_EQ(last->taken, "abcxyz");
    EXPECT_TRUE(hub.sendTo(four, "only", n = 4) && hub.sendToOthers(last, "most", n = 4) == false);
    EXPECT_THAT(four->taken, testing::EndsWith("onlymost"));
    EXPECT_TRUE(last->taken == "abcxyz" && !hub.sendTo(nullptr, "x", n = 1));
    const auto counters = hub.getStatus().at(1).counters;  // `four` took parts, which counts as dropped
    EXPECT_EQ(counters.offered.messages, counters.sent.messages + counters.dropped.messages);
    EXPECT_EQ(counters.dropped.messages, 1u);
}

TEST_F(MultiCommunicatorTest, ConnectionsAreHandedOutOnceEachInTheOrderTheirDataCame) {
    for (int i = 0; i < 3; ++i) add();
    EXPECT_EQ(available(), 0);
    int expected = 0;
    for (const std::size_t i : {2u, 0u, 1u}) {
        sends(*far[i], "xy");
        ++expected;
        ASSERT_TRUE(eventually([&] { return available() == expected; }));
    }
    for (const std::size_t i : {2u, 0u, 1u}) {
        EXPECT_EQ(next(), near[i]);
        EXPECT_EQ(received(*near[i]), "xy");
    }
    EXPECT_EQ(available(), 0);
    sends(*far[1], "xy");
    for (const char* left : {"x", "y"}) {  // reported again for what was left
        EXPECT_EQ(next(), near[1]);
        EXPECT_EQ(received(*near[1], 1), left);
    }
}

TEST_F(MultiCommunicatorTest, OneBreakEndsOneWaitAndDoesNotCountAsData) {
    hub.breakWait();
    hub.breakWait();  // the same as one
    EXPECT_FALSE(hub.waitForCommunicators());
    auto* const connection = add();
    sends(*far[0], "x");
    EXPECT_TRUE(hub.waitForCommunicators());
    hub.breakWait();
    EXPECT_EQ(available(), 1);
    EXPECT_FALSE(hub.waitForCommunicators());
    EXPECT_EQ(next(), connection);
    EXPECT_EQ(received(*connection), "x");
    hub.breakWait();
    auto waiter = std::async(std::launch::async, [&] {  // takes no notice of a break
        Communicator* handedOut = nullptr;
        return hub.receiveCommunicator(handedOut) ? handedOut : nullptr;
    });
    EXPECT_EQ(waiter.wait_for(std::chrono::milliseconds(1)), std::future_status::timeout);
    sends(*far[0], "y");
    EXPECT_EQ(waiter.get(), connection);
}

TEST_F(MultiCommunicatorTest, ARemovedConnectionIsUntouchedAndLeavesNothingBehind) {
    for (int i = 0; i < 3; ++i) add();
    hub.removeCommunicator(nullptr);
    for (int i = 0; i < 2; ++i) sends(*far[static_cast<std::size_t>(i)], "x");
    ASSERT_TRUE(eventually([&] { return available() == 2; }));
    Communicator* const first = next();
    for (auto* each : near) hub.removeCommunicator(each);  // handed out, queued and watched
    EXPECT_TRUE(hub.getCount() == 0 && available() == 0);
    hub.breakWait();
    EXPECT_FALSE(hub.waitForCommunicators());
    EXPECT_EQ(received(*first), "x");
    EXPECT_EQ(near[2]->waitForData(0), 3);  // no wake-up of the hub's is left in it
    for (auto* each : near) delete each;
}

TEST_F(MultiCommunicatorTest, ClosingDeletesEveryConnectionWhateverItDoes) {
    bool deleted[2] = {};
    for (bool& each : deleted) hub.addCommunicator(new DeafConnection(1, &each));
    add();
    far.back()->close();
    next();
    EXPECT_TRUE(hub.close() && hub.close() && deleted[0] && deleted[1]);
    EXPECT_EQ(available(), 0);
    add();  // usable again
    sends(*far.back(), "x");
    EXPECT_EQ(next(), near.back());
}

TEST_F(MultiCommunicatorTest, TheEndOfAPeerIsReportedUntilTheConnectionIsRemoved) {
    auto* const connection = add();
    far[0]->close();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(next(), connection);
        EXPECT_EQ(received(*connection), "");
    }
    EXPECT_TRUE(hub.dropCommunicator(connection) && !hub.dropCommunicator(connection));
    EXPECT_EQ(available(), 0);
}

/// Prefixes what it sends.
struct LoudHub : MultiCommunicator {
    struct Loud : CommThread {
        using CommThread::CommThread;
        bool send(const void* data, int& length) override {
            int sent = 1;
            return getCommunicator()->send("!", sent) && CommThread::send(data, length);
        }
    };
    CommThread* createCommThread(MultiCommunicator* owner, Communicator* connection) override {
        return new Loud(owner, connection);
    }
};

TEST(MultiCommunicatorHookTest, ASubclassSuppliesItsOwnSending) {
    LoudHub hub;
    auto* const connection = new DeafConnection(9);
    hub.addCommunicator(connection);
    int n = 2;
    EXPECT_TRUE(hub.send("hi", n));
    EXPECT_EQ(connection->taken, "!hi");
}
