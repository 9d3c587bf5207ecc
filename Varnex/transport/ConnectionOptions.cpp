#include <Varnex/transport/ConnectionOptions.h>

#include <algorithm>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace Varnex {

namespace {

constexpr int kKeepAliveProbes = 4;

bool setOption(int fd, int level, int name, int value) {
    return ::setsockopt(fd, level, name, &value, sizeof value) == 0;
}

bool setSendTimeout(int fd, int ms) {
    const timeval limit{ms / 1000, ms % 1000 * 1000};
    return ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) == 0;
}

bool setKeepAlive(int fd, int seconds) {
    if (seconds == 0) return setOption(fd, SOL_SOCKET, SO_KEEPALIVE, 0);
    const int interval = std::max(1, seconds / kKeepAliveProbes);
    return setOption(fd, IPPROTO_TCP, TCP_KEEPIDLE, seconds) && setOption(fd, IPPROTO_TCP, TCP_KEEPINTVL, interval) &&
           setOption(fd, IPPROTO_TCP, TCP_KEEPCNT, kKeepAliveProbes) && setOption(fd, SOL_SOCKET, SO_KEEPALIVE, 1);
}

}  // namespace

bool ConnectionOptions::applyTo(int fd) const {
    return setSendTimeout(fd, sendTimeoutMs) && setKeepAlive(fd, keepAliveSeconds) &&
           setOption(fd, IPPROTO_TCP, TCP_USER_TIMEOUT, userTimeoutMs);
}

}  // namespace Varnex
