#include <Varnex/transport/IOException.h>
#include <Varnex/transport/SocketAddress.h>
#include <tests/support/ThrowsText.h>

#include <cstring>

#include <netinet/in.h>

using Varnex::Exception;
using Varnex::SocketAddress;

namespace {

int failingLookUps = 0;
const char* serviceAnswer = nullptr;  // what the next look-ups say instead of the system

SocketAddress resolveOne(const char* host, const char* service, SocketAddress::Flags flags = SocketAddress::NoFlags,
                         SocketAddress::SockType type = SocketAddress::Stream,
                         SocketAddress::Proto proto = SocketAddress::TCP) {
    std::vector<SocketAddress> all(3);
    SocketAddress::resolve(host, std::string(service), flags, type, proto, all);
    return all.at(0);
}

}  // namespace

extern "C" int __real_getnameinfo(const sockaddr*, socklen_t, char*, socklen_t, char*, socklen_t, int);
extern "C" int __wrap_getnameinfo(const sockaddr* address, socklen_t length, char* host, socklen_t hostSize,
                                  char* service, socklen_t serviceSize, int flags) {
    if (failingLookUps > 0) return --failingLookUps, EAI_FAIL;
    if (serviceAnswer == nullptr)
        return __real_getnameinfo(address, length, host, hostSize, service, serviceSize, flags);
    std::strncpy(service, serviceAnswer, serviceSize);
    return 0;
}

TEST(SocketAddressTest, ResolvesHostsAndServices) {
    using S = SocketAddress;
    struct {
        const char *host, *service;
        S::Flags flags;
        S::SockType type;
        S::Proto proto;
        const char* address;
        int family, port;
        const char* serviceName;
        bool unspecified, loopback;
    } const cases[] = {
        {"", "80", S::Passive, S::Stream, S::TCP, "0.0.0.0", AF_INET, 80, "http", true, false},
        {"127.0.0.1", "http", S::NoFlags, S::Stream, S::TCP, "127.0.0.1", AF_INET, 80, "http", false, true},
        {"127.0.0.2", "514", S::NumericHost, S::Stream, S::TCP, "127.0.0.2", AF_INET, 514, "shell", false, false},
        {"127.0.0.1", "514", S::NumericHost | S::NumericService, S::Datagram, S::UDP, "127.0.0.1", AF_INET, 514,
         "syslog", false, true},
        {"::1", "65535", S::NoFlags, S::Stream, S::TCP, "::1", AF_INET6, 65535, "65535", false, true},
        {"::", "", S::NoFlags, S::Stream, S::AnyProto, "::", AF_INET6, 0, "0", true, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.host) + " " + c.service);
        const SocketAddress address = resolveOne(c.host, c.service, c.flags, c.type, c.proto);
        EXPECT_EQ(address.getHostAddress(), c.address);
        EXPECT_EQ(address.getFamily(), c.family);
        EXPECT_EQ(address.getSockType(), c.type);
        EXPECT_EQ(address.getServicePort(), c.port);
        EXPECT_EQ(address.getServiceName(), c.serviceName);
        EXPECT_EQ(address.isUnspecified(), c.unspecified);
        EXPECT_EQ(address.isLoopback(), c.loopback);
    }
}

TEST(SocketAddressTest, APortResolvesAsItsDecimalTextToEveryWildcard) {
    std::vector<SocketAddress> all(5);
    SocketAddress::resolve("", 80, SocketAddress::Passive, SocketAddress::Stream, SocketAddress::TCP, all);
    ASSERT_GE(all.size(), 1u);
    for (const auto& address : all) EXPECT_TRUE(address.isUnspecified() && address.getServicePort() == 80);
}

TEST(SocketAddressTest, ACopyHoldsItsOwnAddress) {
    SocketAddress address = resolveOne("127.0.0.1", "1");
    const SocketAddress copy = address;
    const SocketAddress& itself = address;
    address = itself;
    EXPECT_EQ(address.getHostAddress(), "127.0.0.1");
    address = resolveOne("::1", "2");
    EXPECT_EQ(copy.getHostAddress(), "127.0.0.1");
    EXPECT_EQ(copy.getServicePort(), 1);
    address = SocketAddress();
    EXPECT_EQ(address.getAddress(), nullptr);
    EXPECT_FALSE(address.isUnspecified() || address.isLoopback());
}

TEST(SocketAddressTest, FailuresThrowTheResolversText) {
    EXPECT_THROWS_TEXT(resolveOne("x", "1", SocketAddress::NumericHost), Exception, "Name or service not known");
    EXPECT_THROWS_TEXT(resolveOne("", "no-such-service"), Exception, "Servname not supported for ai_socktype");
    EXPECT_THROWS_TEXT(SocketAddress().getHostAddress(), Exception, "ai_family not supported");
    EXPECT_THROWS_TEXT(SocketAddress().getServiceName(), Exception, "ai_family not supported");
    EXPECT_THROWS_TEXT(SocketAddress().getServicePort(), Exception, "ai_family not supported");
}

TEST(SocketAddressTest, RefusesAnAddressThatDoesNotFit) {
    unsigned char bytes[129] = {};
    addrinfo result{};
    result.ai_addr = reinterpret_cast<sockaddr*>(bytes);
    result.ai_addrlen = sizeof bytes;
    const char* const text = "Invalid address size (129), must be smaller than or equal to 128";
    EXPECT_THROWS_TEXT(SocketAddress().set(&result), Exception, text);
}

TEST(SocketAddressTest, AHostWithoutANameIsCalledByItsNumber) {
    const SocketAddress address = resolveOne("127.0.0.1", "1");
    EXPECT_EQ(address.getHostName(), "localhost");
    failingLookUps = 1;
    EXPECT_EQ(address.getHostName(), "127.0.0.1");
    failingLookUps = 2;
    EXPECT_THROWS_TEXT(address.getHostName(), Exception, "Non-recoverable failure in name resolution");
}

TEST(SocketAddressTest, OnlyAWholeNumberInRangeIsAPort) {
    const SocketAddress address = resolveOne("127.0.0.1", "1");
    for (const std::string text : {"", "80x", "-1", "65536"}) {
        serviceAnswer = text.c_str();
        EXPECT_THROWS_TEXT(address.getServicePort(), Exception, "Connot convert service to port - " + text);
    }
    serviceAnswer = nullptr;
}
