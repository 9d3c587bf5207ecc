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
    pollfd descriptor{fd, POLLOUT, 0};
    if (ms <= 0 || pollDescriptors({&descriptor, 1}, ms) != 0) return true;
    errno = EAGAIN;
    return false;
}

}  // namespace Varnex
