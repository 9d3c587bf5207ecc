#pragma once

#include <string>
#include <string_view>

namespace Varnex {
class SocketAddress;
}

namespace VarnexTool {

/// A host and a port as the user types them: "host:4711", "127.0.0.1:4711", "[::1]:4711". A value.
struct Endpoint {
    std::string host;  ///< a name or an address, without brackets; empty: all addresses of this machine
    unsigned short port = 0;

    /// To listen at: the host may be missing ("4711", ":4711") and the port may be 0. Throws `UsageError`.
    static Endpoint toListen(std::string_view text);

    /// To connect to: has a host, and a port that is not 0. Throws `UsageError`.
    static Endpoint toConnect(std::string_view text);

    /// Of a connection or listener; an address that has no text gives "?".
    static Endpoint of(const Varnex::SocketAddress& address);

    /// As the user would type it.
    [[nodiscard]] std::string text() const;
};

}  // namespace VarnexTool
