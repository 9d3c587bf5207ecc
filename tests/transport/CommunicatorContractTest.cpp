#include <Varnex/transport/BufferedCommunicator.h>
#include <tests/support/LoopbackPair.h>

#include <gtest/gtest.h>

#include <thread>

using Varnex::Chunk;

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

static std::string receive(Varnex::Communicator& from) {
    char bytes[100];
    int n = sizeof bytes;
    if (!from.receive(bytes, n)) return "(failed)";
    return {bytes, static_cast<std::size_t>(n)};
}

static bool send(Varnex::Communicator& to, const std::string& text) {
    int n = static_cast<int>(text.size());
    return to.send(text.data(), n) && n == static_cast<int>(text.size());
}

TEST_P(CommunicatorContract, BytesArriveAsSentInBothDirections) {
    static const Chunk chunks[] = {{"a", 1}, {"", 0}, {"bcd", 3}};  // faults when written to
    int n = 0;
    EXPECT_TRUE(here.send(chunks, 3, n) && n == 4);
    EXPECT_EQ(there.waitForData(60000), 2);
    EXPECT_TRUE(there.dataAvail(n) && n == 4);
    EXPECT_EQ(receive(there), "abcd");
    EXPECT_TRUE(send(there, "back"));
    EXPECT_TRUE(here.waitForData());
    EXPECT_EQ(receive(here), "back");
    EXPECT_EQ(here.waitForData(0), 3);
    EXPECT_TRUE(here.dataAvail(n) && n == 0);
}

TEST_P(CommunicatorContract, NothingIsRefusedOrDoneWithoutTouchingTheChannel) {
    char byte = 0;
    int n = 0;
    EXPECT_TRUE(here.send(nullptr, 0, n) && n == 0);
    EXPECT_TRUE(send(there, "x"));
    EXPECT_TRUE(here.waitForData());
    EXPECT_FALSE(here.receive(&byte, n = 0));
    EXPECT_FALSE(here.receive(nullptr, n = 1));
    EXPECT_FALSE(here.send(nullptr, n = 1));
    EXPECT_EQ(receive(here), "x");
}

TEST_P(CommunicatorContract, EachWakeUpEndsOneWaitAndComesBeforeData) {
    EXPECT_TRUE(send(there, "xy"));
    EXPECT_EQ(here.waitForData(60000), 2);
    for (int i = 0; i < 3; ++i) here.breakWait();
    EXPECT_EQ(here.waitForData(-1), 1);
    EXPECT_FALSE(here.waitForData());
    EXPECT_EQ(receive(here), "xy");
    EXPECT_EQ(here.waitForData(0), 1);
    EXPECT_EQ(here.waitForData(0), 3);
    for (int i = 0; i < 50; ++i) {
        std::thread waker([&] { here.breakWait(); });
        EXPECT_EQ(here.waitForData(-1), 1);
        waker.join();
    }
    EXPECT_EQ(here.waitForData(0), 3);
}

TEST_P(CommunicatorContract, AClosedEndRefusesAndTheOtherSeesTheEnd) {
    EXPECT_TRUE(send(here, "last"));
    EXPECT_TRUE(here.close() && here.close());
    EXPECT_EQ(here.waitForData(-1), 0);
    EXPECT_EQ(receive(here), "(failed)");
    EXPECT_FALSE(send(here, "x"));
    EXPECT_EQ(there.waitForData(60000), 2);
    EXPECT_EQ(receive(there), "last");
    if (!GetParam().isStream) return;
    EXPECT_EQ(there.waitForData(-1), 2);
    EXPECT_EQ(receive(there), "");
}

static Channel makeTcp() {
    Varnex::Server server;
    server.open("127.0.0.1", 0);
    auto client = std::make_unique<Varnex::Client>();
    client->open("127.0.0.1", server.getLocalPort());
    return {std::move(client), std::unique_ptr<Varnex::Communicator>(server.getClient())};
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
