#pragma once

#include <Varnex/transport/SocketAddress.h>
#include <Varnex/transport/UniqueFd.h>

namespace Varnex {

// Private to the library: what the two ends of a TCP connection do with their sockets.

/// Makes a socket for an address, close-on-exec. Closed, with `errno`, when the system refuses.
UniqueFd makeSocket(const SocketAddress& address);

/// Connects within `timeoutMs` milliseconds, `kNoTimeLimit` without limit, and until `cancelFd` (-1: none) is readable.
/// 0 or the error number.
int connectSocket(int fd, const SocketAddress& to, int timeoutMs, int cancelFd);

/// The local address of a socket of this type and protocol. Throws `IOException` "Cannot get socket name (...)".
SocketAddress localAddressOf(int fd, int sockType, int protocol);

}  // namespace Varnex
