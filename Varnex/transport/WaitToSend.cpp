#include <Varnex/transport/WaitToSend.h>

#include <Varnex/transport/PollReadable.h>

#include <cerrno>

#include <sys/socket.h>
#include <sys/time.h>

namespace Varnex {

bool waitToSendAgain(int fd) {
    timeval limit{};
    socklen_t size = sizeof limit;
    if (::getsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, &size) != 0) return true;
    const int ms = static_cast<int>(limit.tv_sec * 1000 + limit.tv_usec / 1000);
    return ms <= 0 || waitToWrite(fd, ms) || errno != EAGAIN;
}

bool waitToWrite(int fd, int ms) {
    pollfd descriptor{fd, POLLOUT, 0};
    const int ready = pollDescriptors({&descriptor, 1}, ms > 0 ? ms : kNoTimeLimit);
    if (ready > 0 && (descriptor.revents & POLLOUT) != 0) return true;
    if (ready >= 0) errno = ready == 0 ? EAGAIN : EIO;
    return false;
}

}  // namespace Varnex
