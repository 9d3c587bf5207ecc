#include <Varnex/transport/BufferedCommunicator.h>
#include <Varnex/transport/UDP.h>
#include <tests/support/LoopbackPair.h>
#include <tests/support/SerialPair.h>

using End = std::unique_ptr<Varnex::Communicator>;

struct ChannelKind {
    const char* name;
    bool isStream;  // tells the end of the stream
    std::pair<End, End> (*make)();
};

/// What every communicator does, whatever it runs over.
struct CommunicatorContract : testing::TestWithParam<ChannelKind> {
    std::pair<End, End> ends = GetParam().make();
    Varnex::Communicator &here = *ends.first, &there = *ends.second;
    int n = 0;
};

TEST_P(CommunicatorContract, BytesArriveAsSentInBothDirections) {
    static const Varnex::Chunk chunks[] = {{"a", 1}, {"", 0}, {"bcd", 3}};  // faults when written to
    EXPECT_TRUE(here.send(chunks, 3, n) && n == 4);
    for (n = 0; n < 4;) ASSERT_TRUE(there.waitForData(60000) == 2 && there.dataAvail(n));
    EXPECT_EQ(received(there), "abcd");
    EXPECT_TRUE(sends(there, "back") && here.waitForData());
    EXPECT_EQ(received(here), "back");
    EXPECT_TRUE(here.waitForData(0) == 3 && here.dataAvail(n) && n == 0);
}

TEST_P(CommunicatorContract, NothingIsRefusedOrDoneWithoutTouchingTheChannel) {
    char byte = 0;
    EXPECT_TRUE(here.send(nullptr, 0, n) && n == 0 && sends(here, ""));
    EXPECT_TRUE(sends(there, "x") && here.waitForData());
    EXPECT_FALSE(here.receive(&byte, n = 0) || here.receive(nullptr, n = 1));
    EXPECT_TRUE(!here.send(nullptr, n = 1) && n == 0);
    EXPECT_EQ(received(here), "x");
}

TEST_P(CommunicatorContract, EachWakeUpEndsOneWaitAndComesBeforeData) {
    EXPECT_TRUE(sends(there, "xy"));
    EXPECT_EQ(here.waitForData(60000), 2);
    for (int i = 0; i < 3; ++i) here.breakWait();
    EXPECT_TRUE(here.waitForData(-1) == 1 && !here.waitForData());
    EXPECT_EQ(here.waitForData(0), 1);
    EXPECT_EQ(received(here), "xy");
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(here.waitForData(0), 3);
        std::thread waker([&] { here.breakWait(); });
        EXPECT_EQ(here.waitForData(-1), 1);
        waker.join();
    }
}

TEST_P(CommunicatorContract, AClosedEndRefusesAndTheOtherSeesTheEnd) {
    EXPECT_TRUE(sends(here, "last") && here.close() && here.close());
    EXPECT_TRUE(here.waitForData(-1) == 0 && received(here) == "(failed)");
    EXPECT_TRUE(!here.send("x", n = 1) && n == 0);
    EXPECT_EQ(there.waitForData(60000), 2);
    EXPECT_EQ(received(there), "last");
    if (!GetParam().isStream) return;
    EXPECT_EQ(there.waitForData(-1), 2);
    EXPECT_EQ(received(there), "");
}

static std::pair<End, End> makeTcp() {
    LoopbackPair pair;
    auto client = std::make_unique<Varnex::Client>();
    client->open("127.0.0.1", pair.server.getLocalPort());
    return {std::move(client), End(pair.server.getClient())};
}

static std::pair<End, End> makeBuffered() {
    const auto buffer = [](End inner) {
        return std::make_unique<Varnex::BufferedCommunicator>(inner.release(), true, 2);
    };
    auto [here, there] = makeTcp();
    return {buffer(std::move(here)), buffer(std::move(there))};
}

static std::pair<End, End> makeSerial() {
    auto pair = std::make_unique<SerialPair>();
    return {std::move(pair->line), std::move(pair->master)};
}

static std::pair<End, End> makeUdp() {
    auto here = std::make_unique<Varnex::UDP>(), there = std::make_unique<Varnex::UDP>();
    EXPECT_TRUE(here->open() && there->open());
    here->setDestination(Varnex::InetAddress::getLoopbackAddress(), there->getPort());
    there->setDestination(Varnex::InetAddress::getLoopbackAddress(), here->getPort());
    return {std::move(here), std::move(there)};
}

const ChannelKind kKinds[] = {
    {"TCP", true, makeTcp}, {"Buffered", true, makeBuffered}, {"Serial", false, makeSerial}, {"UDP", false, makeUdp}};
INSTANTIATE_TEST_SUITE_P(Kinds, CommunicatorContract, testing::ValuesIn(kKinds),
                         [](const auto& kind) { return kind.param.name; });
