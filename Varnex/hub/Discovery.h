#pragma once

#include <Varnex/transport/Multicast.h>

#include <cstdint>

namespace Varnex {

// Private to the library: what servers and clients agree on to find each other. docs/discovery.md tells the rest.

inline constexpr const char* kDiscoveryGroup = "224.21.12.68";
inline constexpr unsigned short kDiscoveryPort = 4711;

/// States of a server in its announcements.
inline constexpr short kServing = 1;
inline constexpr short kClosingDown = 3;

/// Sets group, port and the interface of this host's own address.
void prepareDiscovery(Multicast& channel);

/// Whether a query and a server, or an announcement and a client, mean each other: a common bit and the same ID. Only
/// 32 and 16 bits travel.
[[nodiscard]] bool match(long maskA, long maskB, int idA, int idB);

/// Takes wake-ups that came after the waiting thread had ended by itself.
void drainWakeUps(Receiver& channel);

}  // namespace Varnex
