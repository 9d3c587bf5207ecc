#pragma once

#include <Varnex/Export.h>

namespace Varnex {

/// What a web server grants its clients. 0: no limit, but for the number of clients. Times in seconds.
struct VARNEX_API WebLimits {
    static constexpr int kDefaultMaxClients = 256;
    static constexpr int kDefaultRequestTimeout = 300;
    static constexpr int kDefaultMaxKeepAliveRequests = 100;
    static constexpr int kDefaultKeepAliveTimeout = 15;
    static constexpr int kDefaultReceiveTimeout = 30;
    static constexpr int kDefaultSendTimeout = 30;
    static constexpr unsigned long kDefaultMaxHead = 262'144;      // bytes
    static constexpr unsigned long kDefaultMaxBody = 64UL << 20U;  // bytes

    int maxClients = kDefaultMaxClients;                      ///< connections at once; the next ones wait
    int requestTimeout = kDefaultRequestTimeout;              ///< until the first request begins
    int maxKeepAliveRequests = kDefaultMaxKeepAliveRequests;  ///< of one connection
    int keepAliveTimeout = kDefaultKeepAliveTimeout;          ///< between two requests
    int receiveTimeout =
        kDefaultReceiveTimeout;               ///< from the first byte of a request to its last, however they trickle
    int sendTimeout = kDefaultSendTimeout;    ///< that sending a reply makes no progress
    unsigned long maxHead = kDefaultMaxHead;  ///< bytes of a request but for its body
    unsigned long maxBody = kDefaultMaxBody;  ///< bytes

    /// Careful values for a server that anybody can reach.
    [[nodiscard]] static WebLimits hardened();
};

}  // namespace Varnex
