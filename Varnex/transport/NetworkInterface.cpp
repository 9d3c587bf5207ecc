#include <Varnex/transport/NetworkInterface.h>

#include <algorithm>
#include <memory>

#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

namespace Varnex {

namespace {

struct FreeList {
    void operator()(ifaddrs* list) const { ::freeifaddrs(list); }
};

InetAddress toAddress(const sockaddr& system) {
    return InetAddress::getByNetworkOrder(reinterpret_cast<const sockaddr_in&>(system).sin_addr.s_addr);
}

}  // namespace

std::vector<NetworkInterface> NetworkInterface::getAll() {
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0) return {};
    const std::unique_ptr<ifaddrs, FreeList> owner(list);
    std::vector<NetworkInterface> all;
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET) continue;
        all.push_back({entry->ifa_name, static_cast<int>(::if_nametoindex(entry->ifa_name)),
                       toAddress(*entry->ifa_addr), (entry->ifa_flags & IFF_UP) != 0,
                       (entry->ifa_flags & IFF_MULTICAST) != 0});
    }
    return all;
}

std::optional<NetworkInterface> NetworkInterface::find(const std::string& addressOrName) {
    auto all = getAll();
    all.emplace_back();  // any
    const auto found = std::find_if(all.begin(), all.end(), [&](const NetworkInterface& each) {
        return each.address.getHostAddress() == addressOrName || (each.index != 0 && each.name == addressOrName);
    });
    return found != all.end() ? std::optional(*found) : std::nullopt;
}

}  // namespace Varnex
