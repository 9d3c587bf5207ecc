#pragma once

namespace Varnex {

/// What a TCP connection asks of its sockets; the defaults leave everything to the system. `NetCommunicator` keeps one
/// and sets it with operations of its own.
struct ConnectionOptions {
    int sendTimeoutMs = 0;     ///< 0: none
    int userTimeoutMs = 0;     ///< 0: the system's
    int keepAliveSeconds = 0;  ///< idle time before the first probe, 0: off
};

}  // namespace Varnex
