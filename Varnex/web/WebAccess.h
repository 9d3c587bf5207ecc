#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace Varnex {

/// A request that has been answered, for an access log.
struct WebAccess {
    std::string peer;  ///< address and port
    std::string method;
    std::string uri;  ///< without its query
    std::string version;
    unsigned long code = 0;
    unsigned long long bytes = 0;  ///< of the reply's body
    std::chrono::microseconds duration{0};
};

/// Called on the thread that serves the connection, after the reply; on many threads at once by a threaded server.
using WebAccessLog = std::function<void(const WebAccess& access)>;

}  // namespace Varnex
