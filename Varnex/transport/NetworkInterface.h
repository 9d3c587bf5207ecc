#pragma once

#include <Varnex/transport/InetAddress.h>

#include <optional>
#include <string>
#include <vector>

namespace Varnex {

/// One IPv4 network interface of this machine, as multicast needs it. A value.
struct VARNEX_API NetworkInterface {
    std::string name;                                         ///< such as "eth0"; empty: known by its address only
    int index = 0;                                            ///< the system's number; 0: by the address
    InetAddress address = InetAddress::getAnyLocalAddress();  ///< 0.0.0.0: any
    bool isUp = false;
    bool canMulticast = false;

    /// All that have an IPv4 address, one entry for each address. Empty on failure.
    static std::vector<NetworkInterface> getAll();

    /// By name, or by dotted address, 0.0.0.0 for any; nothing when this machine has no such interface.
    static std::optional<NetworkInterface> find(const std::string& addressOrName);
};

}  // namespace Varnex
