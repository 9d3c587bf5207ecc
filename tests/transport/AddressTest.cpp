#include <Varnex/transport/Exception.h>
#include <Varnex/transport/InetAddress.h>
#include <Varnex/transport/SocketAddress.h>
#include <tests/support/ThrowsText.h>

#include <gmock/gmock.h>

#include <cstring>

#include <unistd.h>

using Varnex::Exception;
using Varnex::InetAddress;
using Varnex::SocketAddress;
using S = SocketAddress;

namespace {

int failingLookUps = 0;               // of names for addresses, from now on
const char* serviceAnswer = nullptr;  // what they say instead of the system

SocketAddress resolve(const char* host, const char* service, S::Flags flags = S::NoFlags, S::SockType type = S::Stream,
                      S::Proto proto = S::TCP) {
    std::vector<SocketAddress> all(3);
    SocketAddress::resolve(host, std::string(service), flags, type, proto, all);
    return all.at(0);
}

}  // namespace

extern "C" int __real_getnameinfo(const sockaddr*, socklen_t, char*, socklen_t, char*, socklen_t, int);
extern "C" int __wrap_getnameinfo(const sockaddr* address, socklen_t size, char* host, socklen_t hostSize,
                                  char* service, socklen_t serviceSize, int flags) {
    if (failingLookUps > 0) return --failingLookUps, EAI_FAIL;
    if (serviceAnswer != nullptr) return std::strncpy(service, serviceAnswer, serviceSize), 0;
    return __real_getnameinfo(address, size, host, hostSize, service, serviceSize, flags);
}

TEST(InetAddressTest, ReadsTextAndTellsTheKindsApart) {
    const struct {
        const char *text, *dotted, *kind;
    } cases[] = {
        {"127.0.0.1", "127.0.0.1", "loopback"},
        {"127.0.0.2", "127.0.0.2", ""},
        {"0.0.0.0", "0.0.0.0", "any"},
        {"223.255.255.255", "223.255.255.255", ""},
        {"224.21.12.68", "224.21.12.68", "multi"},
        {"239.255.255.255", "239.255.255.255", "multi"},
        {"240.0.0.1", "240.0.0.1", ""},
        {"0x7f.1", "127.0.0.1", "loopback"},
        {"1.2.3.256", "255.255.255.255", "bad"},
        {"255.255.255.255", "255.255.255.255", "bad"},
    };
    for (const auto& c : cases) {
        const InetAddress address = InetAddress::getByAddress(std::string(c.text));
        const std::string kind =
            std::string(address.isValid() ? "" : "bad") + (address.isAnyLocalAddress() ? "any" : "") +
            (address.isLoopbackAddress() ? "loopback" : "") + (address.isMulticastAddress() ? "multi" : "");
        EXPECT_EQ(address.getHostAddress(), c.dotted);
        EXPECT_EQ(kind, c.kind) << c.text;
    }
    const unsigned char octets[] = {1, 2, 3, 4};
    unsigned char back[4] = {};
    InetAddress::getByAddress(octets).getAddress(back);
    EXPECT_EQ(InetAddress::getByAddress(octets).getHostAddress(), "1.2.3.4");
    EXPECT_THAT(back, testing::ElementsAreArray(octets));
    EXPECT_FALSE(InetAddress().isValid());
    EXPECT_TRUE(InetAddress::getAnyLocalAddress().isAnyLocalAddress());
}

TEST(InetAddressTest, LooksUpLocalNamesAndInterfacesAndRefusesBadNames) {
    const InetAddress loopback = InetAddress::getLoopbackAddress();
    EXPECT_EQ(loopback.getHostName(), "localhost");
    EXPECT_EQ(loopback.getNetmask().getHostAddress(), "255.0.0.0");
    EXPECT_FALSE(InetAddress::getByName("127.0.0.2").getNetmask().isValid());
    EXPECT_EQ(InetAddress::getByName("localhost"), loopback);
    for (const char* host : {"localhost", "127.0.0.1"})
        EXPECT_THAT(InetAddress::getAllByName(host), testing::Contains(loopback));
    for (const char* host : {"a..b", "255.255.255.255"}) EXPECT_FALSE(InetAddress::getByName(host).isValid());
    EXPECT_THAT(InetAddress::getAllByName("a..b"), testing::IsEmpty());
    char name[256] = {};
    ASSERT_EQ(::gethostname(name, sizeof name - 1), 0);
    EXPECT_EQ(InetAddress::getLocalHostName(), name);
    EXPECT_EQ(InetAddress::getLocalHost(), InetAddress::getByName(name));
    EXPECT_EQ(InetAddress::getAllLocalHost(), InetAddress::getAllByName(name));
}

TEST(SocketAddressTest, ResolvesHostsAndServices) {
    const struct {
        SocketAddress address;
        const char* host;
        int family, type, port;
        const char *service, *kind;
    } cases[] = {
        {resolve("", "80", S::Passive), "0.0.0.0", AF_INET, SOCK_STREAM, 80, "http", "any"},
        {resolve("127.0.0.1", "http"), "127.0.0.1", AF_INET, SOCK_STREAM, 80, "http", "loopback"},
        {resolve("127.0.0.2", "514", S::NumericHost), "127.0.0.2", AF_INET, SOCK_STREAM, 514, "shell", ""},
        {resolve("127.0.0.1", "514", S::NumericHost | S::NumericService, S::Datagram, S::UDP), "127.0.0.1", AF_INET,
         SOCK_DGRAM, 514, "syslog", "loopback"},
        {resolve("::1", "65535"), "::1", AF_INET6, SOCK_STREAM, 65535, "65535", "loopback"},
        {resolve("::", ""), "::", AF_INET6, SOCK_STREAM, 0, "0", "any"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.address.getHostAddress(), c.host);
        EXPECT_EQ(c.address.getFamily(), c.family);
        EXPECT_EQ(c.address.getSockType(), c.type);
        EXPECT_EQ(c.address.getServicePort(), c.port);
        EXPECT_EQ(c.address.getServiceName(), c.service);
        EXPECT_EQ(std::string(c.address.isUnspecified() ? "any" : "") + (c.address.isLoopback() ? "loopback" : ""),
                  c.kind);
    }
    std::vector<SocketAddress> all(5);
    SocketAddress::resolve("", 80, S::Passive, S::Stream, S::TCP, all);
    for (const auto& address : all) EXPECT_TRUE(address.isUnspecified() && address.getServicePort() == 80);
}

TEST(SocketAddressTest, ACopyHoldsItsOwnAddress) {
    SocketAddress address = resolve("127.0.0.1", "1");
    const SocketAddress copy = address, &itself = address;
    address = itself;
    EXPECT_EQ(address.getHostAddress(), "127.0.0.1");
    address = resolve("::1", "2");
    EXPECT_EQ(copy.getHostAddress(), "127.0.0.1");
    EXPECT_EQ(copy.getServicePort(), 1);
}

TEST(SocketAddressTest, FailuresThrowTheirTexts) {
    EXPECT_THROWS_TEXT(resolve("x", "1", S::NumericHost), Exception, "Name or service not known");
    EXPECT_THROWS_TEXT(resolve("", "no-such-service"), Exception, "Servname not supported for ai_socktype");
    EXPECT_THROWS_TEXT(SocketAddress().getServiceName(), Exception, "ai_family not supported");
    unsigned char bytes[129] = {};
    addrinfo result{};
    result.ai_addr = reinterpret_cast<sockaddr*>(bytes);
    result.ai_addrlen = sizeof bytes;
    const char* const tooLarge = "Invalid address size (129), must be smaller than or equal to 128";
    EXPECT_THROWS_TEXT(SocketAddress().set(&result), Exception, tooLarge);

    const SocketAddress address = resolve("127.0.0.1", "1");
    EXPECT_EQ(address.getHostName(), "localhost");
    failingLookUps = 1;
    EXPECT_EQ(address.getHostName(), "127.0.0.1");
    failingLookUps = 2;
    EXPECT_THROWS_TEXT(address.getHostName(), Exception, "Non-recoverable failure in name resolution");
    for (const std::string text : {"", "80x", "-1", "65536"}) {
        serviceAnswer = text.c_str();
        EXPECT_THROWS_TEXT(address.getServicePort(), Exception, "Connot convert service to port - " + text);
    }
    serviceAnswer = nullptr;
}
