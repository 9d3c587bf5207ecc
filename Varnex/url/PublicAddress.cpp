#include <Varnex/url/PublicAddress.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <netinet/in.h>

namespace Varnex {

namespace {

struct Network4 {
    std::uint32_t address;
    int bits;
};

constexpr Network4 kSpecial4[] = {
    {0x00000000, 8},   // this network
    {0x0A000000, 8},   // private
    {0x64400000, 10},  // shared by the customers of a provider
    {0x7F000000, 8},   // loopback
    {0xA9FE0000, 16},  // link-local
    {0xAC100000, 12},  // private
    {0xC0000000, 24},  // protocol assignments
    {0xC0000200, 24},  // documentation
    {0xC0586300, 24},  // 6to4 relays
    {0xC0A80000, 16},  // private
    {0xC6120000, 15},  // benchmarks
    {0xC6336400, 24},  // documentation
    {0xCB007100, 24},  // documentation
    {0xE0000000, 3},   // multicast, reserved, broadcast
};

bool isPublic4(std::uint32_t address) {
    for (const Network4& network : kSpecial4)
        if ((address ^ network.address) >> (32 - network.bits) == 0) return false;
    return true;
}

using Bytes6 = std::array<std::uint8_t, 16>;

std::uint32_t ipv4At(const Bytes6& bytes, std::size_t i) {
    return std::uint32_t{bytes[i]} << 24 | std::uint32_t{bytes[i + 1]} << 16 | std::uint32_t{bytes[i + 2]} << 8 |
           bytes[i + 3];
}

bool startsWith(const Bytes6& bytes, const Bytes6& prefix, std::size_t size) {
    return std::memcmp(bytes.data(), prefix.data(), size) == 0;
}

bool isPublic6(const Bytes6& bytes) {
    constexpr Bytes6 kMapped{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF}, kTranslated{0, 0x64, 0xFF, 0x9B};
    constexpr Bytes6 kDocumentation{0x20, 0x01, 0x0D, 0xB8}, kDocumentation20{0x3F, 0xFF}, k6to4{0x20, 0x02},
        kAssignments{0x20, 0x01};
    if (startsWith(bytes, kMapped, 12) || startsWith(bytes, kTranslated, 12)) return isPublic4(ipv4At(bytes, 12));
    if (startsWith(bytes, k6to4, 2)) return isPublic4(ipv4At(bytes, 2));
    if (startsWith(bytes, kDocumentation, 4) || (startsWith(bytes, kDocumentation20, 2) && bytes[2] < 16)) return false;
    if (startsWith(bytes, kAssignments, 2) && bytes[2] < 2) return false;  // 2001::/23, tunnels among them
    return bytes[0] >> 5 == 1;                                             // 2000::/3; nothing else is given out
}

}  // namespace

bool isPublicAddress(const sockaddr& address) {
    if (address.sa_family == AF_INET) {
        sockaddr_in ipv4;
        std::memcpy(&ipv4, &address, sizeof ipv4);
        return isPublic4(ntohl(ipv4.sin_addr.s_addr));
    }
    if (address.sa_family != AF_INET6) return false;
    sockaddr_in6 ipv6;
    std::memcpy(&ipv6, &address, sizeof ipv6);
    Bytes6 bytes;
    std::memcpy(bytes.data(), &ipv6.sin6_addr, bytes.size());
    return isPublic6(bytes);
}

}  // namespace Varnex
