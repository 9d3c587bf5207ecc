#include <Varnex/transport/Exception.h>
#include <Varnex/transport/InetAddress.h>
#include <Varnex/transport/SocketAddress.h>
#include <tests/support/FailingCall.h>
#include <tests/support/ThrowsText.h>

#include <gmock/gmock.h>

#include <netdb.h>

using testing::Contains;
using Varnex::Exception;
using Varnex::InetAddress;
using S = Varnex::SocketAddress;

static std::string describe(const InetAddress& a) {
    return a.getHostAddress() + (a.isValid() ? "" : " invalid") + (a.isAnyLocalAddress() ? " any" : "") +
           (a.isLoopbackAddress() ? " loopback" : "") + (a.isMulticastAddress() ? " multicast" : "");
}

TEST(InetAddressTest, ReadsTextAndTellsTheKindsApart) {
    for (const std::string description :
         {"127.0.0.1 loopback", "127.0.0.2", "0.0.0.0 any", "223.255.255.255", "240.0.0.1", "224.21.12.68 multicast",
          "239.255.255.255 multicast", "255.255.255.255 invalid"})
        EXPECT_EQ(describe(InetAddress::getByAddress(description.substr(0, description.find(' ')))), description);
    EXPECT_EQ(describe(InetAddress::getByAddress("0x7f.1")), "127.0.0.1 loopback");
    EXPECT_EQ(describe(InetAddress::getByAddress("1.2.3.256")), describe(InetAddress()));
    unsigned char octets[4] = {};
    InetAddress::getByAddress("1.2.3.4").getAddress(octets);
    EXPECT_THAT(octets, testing::ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(describe(InetAddress::getByAddress(octets)), "1.2.3.4");
}

TEST(InetAddressTest, LooksUpLocalNamesAndInterfacesAndRefusesBadNames) {
    const InetAddress loopback = InetAddress::getLoopbackAddress();
    EXPECT_EQ(loopback.getHostName(), "localhost");
    EXPECT_EQ(loopback.getNetmask().getHostAddress(), "255.0.0.0");
    EXPECT_FALSE(InetAddress::getByName("127.0.0.2").getNetmask().isValid());
    EXPECT_EQ(InetAddress::getByName("localhost"), loopback);
    for (const char* name : {"localhost", "127.0.0.1"})
        EXPECT_THAT(InetAddress::getAllByName(name), Contains(loopback));
    for (const char* host : {"a..b", "255.255.255.255"}) EXPECT_FALSE(InetAddress::getByName(host).isValid());
    EXPECT_THAT(InetAddress::getAllByName("a..b"), testing::IsEmpty());
    const auto all = InetAddress::getAllLocalHost();
    EXPECT_EQ(all, InetAddress::getAllByName(InetAddress::getLocalHostName()));
    EXPECT_EQ(InetAddress::getLocalHost(), all.empty() ? InetAddress() : all.front());
}

static S resolve(const std::string& host, const char* service, int flags = 0, S::SockType type = S::Stream,
                 S::Proto proto = S::TCP) {
    std::vector<S> all(3);
    S::resolve(host, std::string(service), static_cast<S::Flags>(flags), type, proto, all);
    return all.at(0);
}

static std::string describe(const S& a) {
    const char* const kind = a.isUnspecified() ? " any" : a.isLoopback() ? " loopback" : "";
    return a.toString() + " " + a.getServiceName() + kind;
}

TEST(SocketAddressTest, ResolvesHostsAndServicesAndCopies) {
    EXPECT_EQ(describe(resolve("127.0.0.1", "http")), "127.0.0.1:80 http loopback");
    EXPECT_EQ(describe(resolve("127.0.0.2", "514", S::NumericHost)), "127.0.0.2:514 shell");
    EXPECT_EQ(describe(resolve("::1", "65535")), "[::1]:65535 65535 loopback");
    EXPECT_EQ(describe(resolve("::", "")), "[::]:0 0 any");
    std::vector<S> all(5);
    S::resolve("", 80, S::Passive, S::Stream, S::TCP, all);
    for (const S& wildcard : all) EXPECT_TRUE(wildcard.isUnspecified() && wildcard.getServicePort() == 80);
    S address = resolve("127.0.0.1", "514", S::NumericHost | S::NumericService, S::Datagram, S::UDP);
    const S copy = address, &itself = address;
    EXPECT_EQ(describe(address = itself), "127.0.0.1:514 syslog loopback");
    address = resolve("::1", "2");
    EXPECT_EQ(describe(copy), "127.0.0.1:514 syslog loopback");
}

TEST(SocketAddressTest, FailuresThrowTheirTexts) {
    EXPECT_THROWS_TEXT(resolve("x", "1", S::NumericHost), Exception, "Name or service not known");
    EXPECT_THROWS_TEXT(resolve(std::string("127.0.0.1\0x", 11), "1"), Exception, "Name or service not known");
    EXPECT_THROWS_TEXT(resolve("", "no-such-service"), Exception, "Servname not supported for ai_socktype");
    EXPECT_THROWS_TEXT(S().getServiceName(), Exception, "ai_family not supported");
    addrinfo result{};
    result.ai_addrlen = 129;
    EXPECT_THROWS_TEXT(S().set(&result), Exception, "Invalid address size (129), must be smaller than or equal to 128");
    const S address = resolve("127.0.0.1", "1");
    EXPECT_EQ(address.getHostName(), "localhost");
    const FailingCall once(Call::getnameinfo, 0, EAI_FAIL);
    EXPECT_EQ(address.getHostName(), "127.0.0.1");
    const FailingCall twice(Call::getnameinfo, 0, EAI_FAIL, 2);
    EXPECT_THROWS_TEXT(address.getHostName(), Exception, "Non-recoverable failure in name resolution");
    const FailingCall emptyAnswer(Call::getnameinfo, 0, 0);
    EXPECT_THROWS_TEXT(address.getServicePort(), Exception, "Connot convert service to port - ");
}
