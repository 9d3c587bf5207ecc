#pragma once

#include <Varnex/transport/Chunk.h>
#include <Varnex/transport/SocketAddress.h>

#include <string>

namespace Varnex {

/// A thin view of a socket descriptor for gathered sends. Owns nothing and never closes.
///
/// Without state of its own beyond the four numbers: different objects may be used from different threads.
class VARNEX_API Socket {
public:
    explicit Socket(int fd) : fd_(fd) {}

    /// Sends the chunks as one message with one sendmsg(2), never raising SIGPIPE. `*sent` is the system's result, the
    /// bytes taken or -1; true when it is not negative. `to` may be null on a connected socket.
    bool sendto(Chunk* chunks, int count, unsigned long* sent, int flags, const SocketAddress& to);
    bool sendto(Chunk* chunks, int count, unsigned long* sent, int flags, const sockaddr* to, unsigned int toLen);

    /// The system's text for the present `errno`.
    [[nodiscard]] std::string lastError() const;

    [[nodiscard]] int getDescriptor() const { return fd_; }
    [[nodiscard]] int getFamily() const { return family_; }
    [[nodiscard]] int getSockType() const { return sockType_; }
    [[nodiscard]] int getProtocol() const { return protocol_; }

    /// Points at another descriptor, -1 for none.
    void set(int fd, int family, int sockType, int protocol);

private:
    int fd_;
    int family_ = 0;
    int sockType_ = 0;
    int protocol_ = 0;
};

}  // namespace Varnex
