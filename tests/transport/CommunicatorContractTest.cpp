#include <Varnex/transport/BufferedCommunicator.h>
#include <tests/support/LoopbackPair.h>

struct Channel {
    std::unique_ptr<Varnex::Communicator> here, there;
};

struct ChannelKind {
    const char* name;
    bool isStream;  // tells the end of the stream
    Channel (*make)();
};

/// What every communicator does, whatever it runs over.
struct CommunicatorContract : testing::TestWithParam<ChannelKind> {
    Channel channel = GetParam().make();
    Varnex::Communicator &here = *channel.here, &there = *channel.there;
};

TEST_P(CommunicatorContract, BytesArriveAsSentInBothDirections) {
    static const Varnex::Chunk chunks[] = {{"a", 1}, {"", 0}, {"bcd", 3}};  // faults when written to
    int n = 0;
    EXPECT_TRUE(here.send(chunks, 3, n) && n == 4);
    EXPECT_EQ(there.waitForData(60000), 2);
    EXPECT_TRUE(there.dataAvail(n) && n == 4);
    EXPECT_EQ(received(there), "abcd");
    EXPECT_TRUE(sends(there, "back") && here.waitForData());
    EXPECT_EQ(received(here), "back");
    EXPECT_EQ(here.waitForData(0), 3);
    EXPECT_TRUE(here.dataAvail(n) && n == 0);
}

TEST_P(CommunicatorContract, NothingIsRefusedOrDoneWithoutTouchingTheChannel) {
    char byte = 0;
    int n = 0;
    EXPECT_TRUE(here.send(nullptr, 0, n) && n == 0 && sends(here, ""));
    EXPECT_TRUE(sends(there, "x") && here.waitForData());
    EXPECT_FALSE(here.receive(&byte, n = 0) || here.receive(nullptr, n = 1));
    EXPECT_FALSE(here.send(nullptr, n = 1));
    EXPECT_EQ(n, 0);
    EXPECT_EQ(received(here), "x");
}

TEST_P(CommunicatorContract, EachWakeUpEndsOneWaitAndComesBeforeData) {
    EXPECT_TRUE(sends(there, "xy"));
    EXPECT_EQ(here.waitForData(60000), 2);
    for (int i = 0; i < 3; ++i) here.breakWait();
    EXPECT_EQ(here.waitForData(-1), 1);
    EXPECT_FALSE(here.waitForData());
    EXPECT_EQ(received(here), "xy");
    EXPECT_EQ(here.waitForData(0), 1);
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(here.waitForData(0), 3);
        std::thread waker([&] { here.breakWait(); });
        EXPECT_EQ(here.waitForData(-1), 1);
        waker.join();
    }
}

TEST_P(CommunicatorContract, AClosedEndRefusesAndTheOtherSeesTheEnd) {
    EXPECT_TRUE(sends(here, "last") && here.close() && here.close());
    EXPECT_EQ(here.waitForData(-1), 0);
    EXPECT_EQ(received(here), "(failed)");
    int n = 1;
    EXPECT_TRUE(!here.send("x", n) && n == 0);
    EXPECT_EQ(there.waitForData(60000), 2);
    EXPECT_EQ(received(there), "last");
    if (!GetParam().isStream) return;
    EXPECT_EQ(there.waitForData(-1), 2);
    EXPECT_EQ(received(there), "");
}

static Channel makeTcp() {
    LoopbackPair pair;
    auto client = std::make_unique<Varnex::Client>();
    client->open("127.0.0.1", pair.server.getLocalPort());
    return {std::move(client), std::unique_ptr<Varnex::Communicator>(pair.server.getClient())};
}

static Channel makeBuffered() {
    Channel inner = makeTcp();
    return {std::make_unique<Varnex::BufferedCommunicator>(inner.here.release(), true, 2),
            std::make_unique<Varnex::BufferedCommunicator>(inner.there.release(), true)};
}

INSTANTIATE_TEST_SUITE_P(Streams, CommunicatorContract,
                         testing::Values(ChannelKind{"TCP", true, makeTcp},
                                         ChannelKind{"Buffered", true, makeBuffered}),
                         [](const auto& kind) { return kind.param.name; });
