#include <Varnex/events/MessageEvent.h>
#include <Varnex/transport/Multicast.h>
#include <Varnex/transport/UDP.h>
#include <tests/support/LoopbackPair.h>
#include <tests/support/NetworkNamespace.h>

#include <gmock/gmock.h>

using Varnex::InetAddress;
using Varnex::Multicast;

struct UDPTest : testing::Test {
    Varnex::UDP from, to;
    CapturedDiagnostics printed;
    int n = 0;

    UDPTest() {
        EXPECT_TRUE(from.open() && to.open() && from.getPort() != 0);
        from.setDestination(InetAddress::getLoopbackAddress(), to.getPort());
    }
};

TEST_F(UDPTest, ADatagramIsTakenInPartsAndNeverReachesIntoTheNext) {
    EXPECT_TRUE(sends(from, std::string(88, 'a') + "rest of one") && sends(from, "second"));
    EXPECT_EQ(received(to, 88), std::string(88, 'a'));
    EXPECT_TRUE(to.dataAvail(n) && n == 11 && to.waitForData() && to.waitForData(-1) == 2);
    to.breakWait();
    EXPECT_EQ(to.waitForData(-1), 1);  // also before unread bytes
    EXPECT_EQ(received(to, 200), "rest of one");
    for (const char* part : {"sec", "ond"}) EXPECT_EQ(received(to, 3), part);
    EXPECT_TRUE(sends(from, "to be thrown away") && sends(from, "kept"));
    EXPECT_EQ(received(to, 2), "to");
    to.discardDatagram();
    EXPECT_EQ(received(to), "kept");
    EXPECT_TRUE(to.getLastAddress() == InetAddress::getLoopbackAddress() && to.getLastPort() == from.getPort());
    EXPECT_TRUE(sends(from, "unread") && received(to, 1) == "u" && to.close() && to.open() && to.waitForData(0) == 3);
}

TEST_F(UDPTest, AnEventIsOneDatagramWhateverItsSize) {
    Varnex::MessageEvent event;
    for (const int size : {0, 100, 30000}) {
        event.setText(std::string(static_cast<std::size_t>(size), 'x'));
        EXPECT_TRUE(event.send(&from));
        Varnex::Event* received = nullptr;
        ASSERT_TRUE(Varnex::Event::receive(&to, received));
        const std::unique_ptr<Varnex::Event> owner(received);
        EXPECT_EQ(dynamic_cast<Varnex::MessageEvent&>(*received).getText().size(), static_cast<std::size_t>(size));
    }
    const std::string tooLarge(65508, 'x');
    EXPECT_TRUE(!from.send(tooLarge.data(), n = 65508) && n == 0);
    EXPECT_EQ(printed.errors().substr(printed.errors().find("ERROR: C")), "ERROR: Cannot send (Message too long)\n");
    const std::vector<Varnex::Chunk> many(2000, {"xy", 2});
    EXPECT_TRUE(from.send(many.data(), 2000, n) && n == 4000 && to.dataAvail(n) && n == 4000);
}

TEST_F(UDPTest, FailuresAreToldAndDamagedDatagramsAwaitedNoMore) {
    {
        const FailingCall fails(Call::sendto, EPERM);
        EXPECT_TRUE(!from.send("x", n = 1) && n == 0);
    }
    sends(from, "x");
    char byte = 0;
    {
        const FailingCall fails(Call::recvfrom, ENOMEM);
        EXPECT_FALSE(to.receive(&byte, n = 1));
    }
    {
        const FailingCall damaged(Call::recvfrom, EAGAIN);
        EXPECT_TRUE(to.receive(&byte, n = 1) && byte == 'x');
    }
    EXPECT_EQ(printed.errors(),
              "ERROR: Cannot send (Operation not permitted)\nERROR: Cannot receive (Cannot allocate memory)\n");
    Varnex::UDP taken, closed;
    taken.setPort(from.getPort());
    EXPECT_FALSE(taken.open() || taken.isOpen() || sends(closed, "x") || from.sendTo(nullptr, n = 1, {}, 1));
    EXPECT_THAT(printed.errors(), testing::HasSubstr("\nERROR: couldn't bind socket (Address already in use)\n"));
}

struct MulticastTest : testing::Test {
    Multicast group;
    CapturedDiagnostics printed;

    void SetUp() override {
        static const bool ownNetwork = enterOwnNetwork();
        if (!ownNetwork) GTEST_SKIP() << "the system allows no network namespaces";
        EXPECT_TRUE(group.setAddress("224.21.12.68"));
        group.setInterface(InetAddress::getLoopbackAddress());
    }
};

TEST_F(MulticastTest, EveryoneInTheGroupHearsAndNobodyElse) {
    Multicast other, stranger;
    other.setAddress("224.21.12.68");
    stranger.setAddress("224.21.12.99");
    for (auto* each : {&other, &stranger}) each->setInterface(std::string("lo"));
    ASSERT_TRUE(group.open() && other.open() && stranger.open() && group.getPort() == 4711 && group.getTTL() == 2);
    EXPECT_TRUE(sends(group, "hello"));
    for (auto* each : {&group, &other}) EXPECT_EQ(received(*each), "hello");
    EXPECT_EQ(stranger.waitForData(0), 3);
    EXPECT_EQ(other.getLastAddress(), InetAddress::getLoopbackAddress());
}

TEST_F(MulticastTest, EachStepOfOpeningThatFailsIsToldAndLeavesItClosed) {
    EXPECT_FALSE(group.setAddress(InetAddress::getByAddress("10.0.0.1")));
    EXPECT_EQ(group.getAddress().getHostAddress(), "10.0.0.1");  // stored all the same
    EXPECT_FALSE(group.open() || group.isOpen());
    group.setAddress("224.21.12.68");
    for (const Call call : {Call::socket, Call::setsockopt, Call::bind}) {
        const FailingCall fails(call, ENOMEM);
        EXPECT_FALSE(group.open() || group.isOpen());
    }
    for (const int hops : {-1, 256}) {
        group.setTTL(hops);
        EXPECT_FALSE(group.open() || group.isOpen());
    }
    group.setTTL(255);
    group.setInterface(InetAddress::getByAddress("192.0.2.1"));
    EXPECT_FALSE(group.open() || sends(group, "x"));
    EXPECT_EQ(printed.errors(),
              "ERROR: couldn't join the multicast group (Invalid argument)\n"
              "ERROR: Can't open datagram socket (Cannot allocate memory)\n"
              "ERROR: setsockopt() SO_REUSEADDR failed (Cannot allocate memory)\n"
              "ERROR: couldn't bind socket (Cannot allocate memory)\n"
              "WARNING: setsockopt() IP_MULTICAST_TTL failed (Invalid argument)\n"
              "WARNING: setsockopt() IP_MULTICAST_TTL failed (Invalid argument)\n"
              "ERROR: setsockopt() IP_MULTICAST_IF failed (Cannot assign requested address)\n");
    group.setInterface(std::string("127.0.0.1"));
    EXPECT_TRUE(group.open());
}
