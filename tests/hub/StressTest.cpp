#include <tests/hub/HubFixture.h>

#include <map>

/// Many connections that come, go and talk while others send, remove and break: no hand-out may get lost or doubled,
/// nothing may hang. The time-out of the test is the watchdog.
struct StressTest : HubFixture, testing::WithParamInterface<Varnex::SendPolicy::Mode> {
    static constexpr int kConnections = 200;
    static constexpr int kEvents = 10000;
};

TEST_P(StressTest, NothingIsLostDoubledOrStuck) {
    hub.setSendPolicy({.mode = GetParam()});
    for (int i = 0; i < kConnections; ++i) add();

    std::atomic<bool> done = false;
    std::thread feeder([&] {  // one byte is one event
        for (int i = 0; i < kEvents; ++i) sends(*far[static_cast<std::size_t>(i * 7 % kConnections)], "e");
    });
    std::thread breaker([&] {
        while (!done) {
            hub.breakWait();
            std::this_thread::yield();
        }
    });
    std::thread sender([&] {
        for (int i = 0, size = 1; !done && i < 2000; ++i, size = 1) hub.send("b", size);  // fits the sockets
    });
    std::vector<std::unique_ptr<Varnex::Client>> fleeting;
    std::thread adder([&] {
        for (int i = 0; !done && i < 500; ++i) {
            Varnex::Client dialled;
            dialled.open("127.0.0.1", server.getLocalPort());
            auto* const accepted = server.getClient();
            hub.addCommunicator(accepted);
            hub.removeCommunicator(accepted);  // the consumer never sees it: it says nothing
            EXPECT_EQ(accepted->waitForData(0), 3);
            delete accepted;
        }
    });

    std::map<Communicator*, int> got;
    int total = 0;
    while (total < kEvents) {
        if (!hub.waitForCommunicators()) continue;
        Communicator* connection = nullptr;
        hub.receiveCommunicator(connection);
        const auto bytes = received(*connection);
        EXPECT_NE(bytes, "");  // handed out, so there was data
        got[connection] += static_cast<int>(bytes.size());
        total += static_cast<int>(bytes.size());
    }
    done = true;
    for (auto* thread : {&feeder, &breaker, &sender, &adder}) thread->join();
    for (Communicator* const each : near) EXPECT_EQ(got[each], kEvents / kConnections);
    EXPECT_EQ(total, kEvents);
    EXPECT_EQ(hub.getCount(), kConnections);
    hub.close();
}

TEST_P(StressTest, ItClosesWhileOthersAddSendAndDrop) {
    hub.setSendPolicy({.mode = GetParam()});
    std::atomic<int> told = 0;
    hub.setConnectedCallback([&](Communicator*) { ++told; });
    hub.setLostCallback([&](Communicator*, Varnex::LostReason) { ++told; });
    CapturedDiagnostics quiet;
    for (int round = 0; round < 20; ++round) {
        for (int i = 0; i < 20; ++i) add();
        for (int i = 0; i < 5; ++i) far[static_cast<std::size_t>(i)]->close();
        std::atomic<bool> done = false;
        std::thread adder([&] {
            for (int i = 0; i < 20; ++i) add();
        });
        std::thread sender([&] {
            for (int size = 1; !done; size = 1) hub.send("b", size);
        });
        for (int i = 0; i < round % 4 * 5; ++i) hub.dropNumber(hub.getStatus().at(0).number);
        EXPECT_TRUE(hub.close());
        adder.join();
        done = true;
        sender.join();
        hub.close();
        EXPECT_EQ(hub.getCount(), 0);
        far.clear();
        near.clear();
    }
    EXPECT_GT(told, 20 * 20);
}

INSTANTIATE_TEST_SUITE_P(Policies, StressTest, testing::Values(Varnex::SendPolicy::Block, Varnex::SendPolicy::Queue),
                         [](const auto& mode) { return mode.param == Varnex::SendPolicy::Block ? "Block" : "Queue"; });
