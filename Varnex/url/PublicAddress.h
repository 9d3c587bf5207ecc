#pragma once

#include <sys/socket.h>

namespace Varnex {

// Private to the library.

/// Whether the address belongs to the public internet, by the registries of special-purpose addresses (RFC 6890 and its
/// updates). An IPv6 address that stands for an IPv4 address is judged as that.
[[nodiscard]] bool isPublicAddress(const sockaddr& address);

}  // namespace Varnex
