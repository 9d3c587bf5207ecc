#pragma once

#include <Varnex/transport/SocketAddress.h>
#include <Varnex/transport/UniqueFd.h>

namespace Varnex {

// Private to the library: what the two ends of a TCP connection do with their sockets.

/// Makes a socket for an address, close-on-exec. Closed, with `errno`, when the system refuses.
UniqueFd makeSocket(const SocketAddress& address);

/// Connects within `timeoutMs` milliseconds, `kNoTimeLimit` without limit. 0 or the error number.
int connectSocket(int fd, const SocketAddress& to, int timeoutMs);

/// The local address of a socket made for `kind`. Throws `IOException` "Cannot get socket name (...)".
SocketAddress localAddressOf(int fd, const SocketAddress& kind);

}  // namespace Varnex
