#include <Varnex/transport/InetAddress.h>

#include <gmock/gmock.h>

#include <unistd.h>

using Varnex::InetAddress;

TEST(InetAddressTest, ReadsTextAndTellsTheKindsApart) {
    struct {
        const char* text;
        const char* dotted;
        bool valid, any, loopback, multicast;
    } const cases[] = {
        {"127.0.0.1", "127.0.0.1", true, false, true, false},
        {"127.0.0.2", "127.0.0.2", true, false, false, false},
        {"0.0.0.0", "0.0.0.0", true, true, false, false},
        {"223.255.255.255", "223.255.255.255", true, false, false, false},
        {"224.21.12.68", "224.21.12.68", true, false, false, true},
        {"239.255.255.255", "239.255.255.255", true, false, false, true},
        {"240.0.0.1", "240.0.0.1", true, false, false, false},
        {"0x7f.1", "127.0.0.1", true, false, true, false},
        {"255.255.255.255", "255.255.255.255", false, false, false, false},
        {"1.2.3.256", "255.255.255.255", false, false, false, false},
        {"", "255.255.255.255", false, false, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const InetAddress address = InetAddress::getByAddress(std::string(c.text));
        EXPECT_EQ(address.getHostAddress(), c.dotted);
        EXPECT_EQ(address.isValid(), c.valid);
        EXPECT_EQ(address.isAnyLocalAddress(), c.any);
        EXPECT_EQ(address.isLoopbackAddress(), c.loopback);
        EXPECT_EQ(address.isMulticastAddress(), c.multicast);
    }
    EXPECT_FALSE(InetAddress().isValid());
    EXPECT_EQ(InetAddress::getAnyLocalAddress().getHostAddress(), "0.0.0.0");
}

TEST(InetAddressTest, OctetsGoMostSignificantFirstBothWays) {
    const unsigned char octets[] = {1, 2, 3, 4};
    unsigned char back[4] = {};
    InetAddress::getByAddress(octets).getAddress(back);
    EXPECT_EQ(InetAddress::getByAddress(octets).getHostAddress(), "1.2.3.4");
    EXPECT_THAT(back, testing::ElementsAreArray(octets));
}

TEST(InetAddressTest, LooksUpLocalNamesAndRefusesBadOnes) {
    const InetAddress loopback = InetAddress::getLoopbackAddress();
    EXPECT_EQ(loopback.getHostName(), "localhost");
    EXPECT_EQ(InetAddress::getByName("localhost"), loopback);
    EXPECT_EQ(InetAddress::getByName("10.1.2.3").getHostAddress(), "10.1.2.3");
    for (const char* host : {"localhost", "127.0.0.1"})
        EXPECT_THAT(InetAddress::getAllByName(host), testing::Contains(loopback)) << host;
    for (const char* host : {"a..b", "255.255.255.255"}) EXPECT_FALSE(InetAddress::getByName(host).isValid()) << host;
    EXPECT_THAT(InetAddress::getAllByName("a..b"), testing::IsEmpty());
}

TEST(InetAddressTest, TheLocalHostIsTheFirstAddressOfTheHostName) {
    char name[256] = {};
    ASSERT_EQ(::gethostname(name, sizeof name - 1), 0);
    EXPECT_EQ(InetAddress::getLocalHostName(), name);
    EXPECT_EQ(InetAddress::getLocalHost(), InetAddress::getByName(name));
    EXPECT_EQ(InetAddress::getAllLocalHost(), InetAddress::getAllByName(name));
}

TEST(InetAddressTest, TheNetmaskIsThatOfTheInterfaceWithTheAddress) {
    EXPECT_EQ(InetAddress::getLoopbackAddress().getNetmask().getHostAddress(), "255.0.0.0");
    EXPECT_FALSE(InetAddress::getByAddress(std::string("127.0.0.2")).getNetmask().isValid());
}
