#include <Varnex/transport/StreamSocket.h>

#include <Varnex/transport/IOException.h>
#include <Varnex/transport/PollReadable.h>

#include <cerrno>

#include <fcntl.h>

namespace Varnex {

namespace {

/// Waits for the end of a connect that goes on in the background.
int awaitConnection(int fd, int timeoutMs, int cancelFd) {
    pollfd descriptors[] = {{fd, POLLOUT, 0}, {cancelFd, POLLIN, 0}};
    const int ready = pollDescriptors({descriptors, cancelFd < 0 ? 1u : 2u}, timeoutMs);
    if (ready == 0) return ETIMEDOUT;
    if (ready < 0) return errno;
    if (descriptors[1].revents != 0) return ECANCELED;
    int error = 0;
    socklen_t size = sizeof error;
    return ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

bool setBlocking(int fd, bool blocking) {
    const int flags = ::fcntl(fd, F_GETFL);
    return flags >= 0 && ::fcntl(fd, F_SETFL, blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK) == 0;
}

}  // namespace

UniqueFd makeSocket(const SocketAddress& address) {
    return UniqueFd(::socket(address.getFamily(), address.getSockType() | SOCK_CLOEXEC, address.getProtocol()));
}

int connectSocket(int fd, const SocketAddress& to, int timeoutMs, int cancelFd) {
    const bool limited = timeoutMs != kNoTimeLimit || cancelFd >= 0;
    if (limited && !setBlocking(fd, false)) return errno;
    int error = ::connect(fd, to.getAddress(), to.getAddressLength()) == 0 ? 0 : errno;
    if (error == EINPROGRESS || error == EINTR) error = awaitConnection(fd, timeoutMs, cancelFd);
    if (error == 0 && limited && !setBlocking(fd, true)) return errno;
    return error;
}

SocketAddress localAddressOf(int fd, int sockType, int protocol) {
    sockaddr_storage storage{};
    auto* const address = reinterpret_cast<sockaddr*>(&storage);
    socklen_t length = sizeof storage;
    if (::getsockname(fd, address, &length) != 0) throw IOException("Cannot get socket name", errno);
    SocketAddress local;
    local.set(address, length, sockType, protocol);
    return local;
}

}  // namespace Varnex
