#pragma once

#include <Varnex/transport/SocketAddress.h>
#include <Varnex/transport/UniqueFd.h>
#include <Varnex/transport/WakeUpPipe.h>

#include <string>

namespace Varnex {

class Client;

/// Listens on a TCP port and hands out one `Client` per accepted connection.
///
/// One thread waits for clients and accepts them; `breakWait` is for any thread. Closing does not end another thread's
/// wait, so break the wait first.
class VARNEX_API Server {
public:
    /// What `waitForClient` returns.
    enum WaitResult {
        WaitBroken = 0,  ///< ended by `breakWait`
        WaitClient = 1,  ///< a connection can be accepted
        WaitTimedOut = 2
    };

    /// Connections that may wait to be accepted.
    static constexpr int kDefaultBacklog = 128;

    Server() = default;
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Listens on the first address of `host` that can be bound; an earlier socket is closed. An empty host means all
    /// addresses, in the resolver's order, which is IPv4 first: "::" serves both. Port 0 lets the system choose, see
    /// `getLocalPort`. Throws `Exception` when the host cannot be resolved, with an earlier socket still
    /// listening, and `IOException` otherwise; the object is closed then.
    void open(const std::string& host, unsigned short port);

    /// Waits at most `ms` milliseconds, -1 without limit. One of `WaitResult`; throws `IOException` on failure.
    [[nodiscard]] int waitForClient(int ms);

    /// Whether a connection waits to be accepted. Throws `IOException` on failure.
    [[nodiscard]] bool isClientWaiting();

    /// Accepts a connection, blocking until there is one. The caller owns the result. Throws `IOException`, also when
    /// no descriptors are left; the connection then stays waiting.
    [[nodiscard]] Client* getClient();

    /// Ends one wait, the present or the next. Throws `IOException` when the pipe cannot be made.
    void breakWait();

    /// Throws `IOException` when the system reports a failure; closed all the same.
    void close();

    /// Whether the port may be shared with other listeners of the same user (the default): the system then spreads
    /// the connections over all of them. Without it a taken port is an error. Holds for later `open` calls.
    void setPortSharing(bool on) { portSharing_ = on; }

    /// Holds for later `open` calls.
    void setBacklog(int connections) { backlog_ = connections; }

    [[nodiscard]] bool isOpen() const { return descriptor_.isOpen(); }
    /// For polls of the application's own; -1 when closed, never to be closed by the caller.
    [[nodiscard]] int getDescriptor() const { return descriptor_.get(); }
    [[nodiscard]] const SocketAddress& getLocalAddress() const { return localAddress_; }
    /// The bound port; throws `Exception` before the first `open`.
    [[nodiscard]] unsigned short getLocalPort() const { return localAddress_.getServicePort(); }

private:
    [[nodiscard]] UniqueFd bindTo(const SocketAddress& address) const;
    void listenAt(UniqueFd bound, const SocketAddress& address);

    UniqueFd descriptor_;
    SocketAddress localAddress_;
    int backlog_ = kDefaultBacklog;
    WakeUpPipe wakeUp_;
    bool portSharing_ = true;
};

}  // namespace Varnex
