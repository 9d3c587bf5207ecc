#include <Varnex/transport/InetAddress.h>

#include <Varnex/transport/HostLookup.h>
#include <Varnex/transport/UniqueFd.h>

#include <cstring>
#include <optional>

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Varnex {

namespace {

constexpr std::size_t kHostNameSize = 256;
constexpr std::size_t kInterfaceListSize = 1024;

std::vector<InetAddress> toAddresses(const HostEntry& entry) {
    std::vector<InetAddress> all;
    for (const std::uint32_t address : entry.addresses) all.push_back(InetAddress::getByNetworkOrder(address));
    return all;
}

InetAddress firstAddress(const HostEntry& entry) {
    return entry.addresses.empty() ? InetAddress() : InetAddress::getByNetworkOrder(entry.addresses.front());
}

/// Asks the system for one IPv4 property (SIOCGIFADDR, SIOCGIFNETMASK) of an interface.
std::optional<InetAddress> askInterface(int fd, ifreq request, unsigned long question) {
    if (::ioctl(fd, question, &request) != 0) return std::nullopt;
    sockaddr_in answer;
    std::memcpy(&answer, &request.ifr_addr, sizeof answer);
    return InetAddress::getByNetworkOrder(answer.sin_addr.s_addr);
}

}  // namespace

bool InetAddress::isAnyLocalAddress() const {
    return address_ == htonl(INADDR_ANY);
}

bool InetAddress::isLoopbackAddress() const {
    return address_ == htonl(INADDR_LOOPBACK);
}

bool InetAddress::isMulticastAddress() const {
    return (ntohl(address_) >> 28) == 0xE;
}

void InetAddress::getAddress(unsigned char* out) const {
    std::memcpy(out, &address_, sizeof address_);
}

std::string InetAddress::getHostName() const {
    const HostEntry entry = lookUpHostAddress(address_);
    return entry.name.empty() ? getHostAddress() : entry.name;
}

std::string InetAddress::getHostAddress() const {
    char text[INET_ADDRSTRLEN];
    const in_addr address{address_};
    return ::inet_ntop(AF_INET, &address, text, sizeof text);
}

InetAddress InetAddress::getNetmask() const {
    const UniqueFd socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (socket.get() < 1) return {};
    ifreq interfaces[kInterfaceListSize / sizeof(ifreq)];
    ifconf list{};
    list.ifc_len = sizeof interfaces;
    list.ifc_req = interfaces;
    if (::ioctl(socket.get(), SIOCGIFCONF, &list) != 0) return {};
    const std::size_t count = static_cast<std::size_t>(list.ifc_len) / sizeof(ifreq);
    for (std::size_t i = 0; i < count; ++i) {
        const auto address = askInterface(socket.get(), interfaces[i], SIOCGIFADDR);
        if (!address) return {};
        if (*address == *this) return askInterface(socket.get(), interfaces[i], SIOCGIFNETMASK).value_or(InetAddress());
    }
    return {};
}

InetAddress InetAddress::getByAddress(const unsigned char* octets) {
    InetAddress result;
    std::memcpy(&result.address_, octets, sizeof result.address_);
    return result;
}

InetAddress InetAddress::getByNetworkOrder(std::uint32_t address) {
    InetAddress result;
    result.address_ = address;
    return result;
}

InetAddress InetAddress::getByAddress(const std::string& dotted) {
    return getByNetworkOrder(::inet_addr(dotted.c_str()));
}

InetAddress InetAddress::getByName(const std::string& host) {
    const InetAddress address = getByAddress(host);
    return address.isValid() ? address : firstAddress(lookUpHostName(host));
}

std::vector<InetAddress> InetAddress::getAllByName(const std::string& host) {
    const InetAddress address = getByAddress(host);
    return toAddresses(address.isValid() ? lookUpHostAddress(address.address_) : lookUpHostName(host));
}

InetAddress InetAddress::getLocalHost() {
    const std::string name = getLocalHostName();
    return name.empty() ? InetAddress() : firstAddress(lookUpHostName(name));
}

std::vector<InetAddress> InetAddress::getAllLocalHost() {
    const std::string name = getLocalHostName();
    return name.empty() ? std::vector<InetAddress>() : toAddresses(lookUpHostName(name));
}

InetAddress InetAddress::getAnyLocalAddress() {
    return getByNetworkOrder(htonl(INADDR_ANY));
}

InetAddress InetAddress::getLoopbackAddress() {
    return getByNetworkOrder(htonl(INADDR_LOOPBACK));
}

std::string InetAddress::getLocalHostName() {
    char name[kHostNameSize] = {};
    return ::gethostname(name, sizeof name - 1) == 0 ? name : std::string();
}

}  // namespace Varnex
