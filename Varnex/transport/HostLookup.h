#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Varnex {

// Private to the library: the resolver's host entries (gethostbyname_r, gethostbyaddr_r) as plain values.

/// What the resolver says of a host. Both members are empty when the look-up failed.
struct HostEntry {
    std::string name;                      ///< the official name
    std::vector<std::uint32_t> addresses;  ///< IPv4, network byte order, in the resolver's order
};

HostEntry lookUpHostName(const std::string& host);
HostEntry lookUpHostAddress(std::uint32_t address);

}  // namespace Varnex
