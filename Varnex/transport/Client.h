#pragma once

#include <Varnex/transport/NetCommunicator.h>

#include <string>

namespace Varnex {

/// A TCP connection: one that this process dials, or one that a `Server` accepted.
class VARNEX_API Client : public NetCommunicator {
public:
    Client();
    ~Client() override;

    /// Connects to the first address of `host` that answers. Throws `Exception` when the host cannot be resolved, with
    /// an earlier connection still open, and the `IOException` of the last address when none connects.
    void open(const std::string& host, unsigned short port);

    /// Connects to one address, closing an earlier connection first. Throws `IOException`; the object is closed then.
    void open(const SocketAddress& to);

    /// Limits each connection attempt of later `open` calls, milliseconds; 0 (the default) or less: the system's limit.
    /// What takes longer fails as "Connection timed out".
    void setConnectTimeout(int ms) { connectTimeoutMs_ = ms; }

    /// A descriptor that ends connection attempts while it is readable, for instance the read end of a pipe; they fail
    /// as "Operation canceled". Neither read nor closed here; -1, the default: none. Looking a name up cannot be ended.
    void setConnectCancel(int fd) { connectCancel_ = fd; }

private:
    friend class Server;
    Client(UniqueFd descriptor, const SocketAddress& local, const SocketAddress& remote);

    int connectTimeoutMs_ = 0;
    int connectCancel_ = -1;
};

}  // namespace Varnex
