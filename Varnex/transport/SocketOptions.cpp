#include <Varnex/transport/SocketOptions.h>

#include <algorithm>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace Varnex {

namespace {

constexpr int kKeepAliveProbes = 4;

}  // namespace

bool setSocketOption(int fd, int level, int name, int value) {
    return ::setsockopt(fd, level, name, &value, sizeof value) == 0;
}

bool setSendTimeLimit(int fd, int ms) {
    const timeval limit{ms / 1000, ms % 1000 * 1000};
    return ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) == 0;
}

bool setKeepAliveTime(int fd, int seconds) {
    if (seconds == 0) return setSocketOption(fd, SOL_SOCKET, SO_KEEPALIVE, 0);
    const int interval = std::max(1, seconds / kKeepAliveProbes);
    return setSocketOption(fd, IPPROTO_TCP, TCP_KEEPIDLE, seconds) &&
           setSocketOption(fd, IPPROTO_TCP, TCP_KEEPINTVL, interval) &&
           setSocketOption(fd, IPPROTO_TCP, TCP_KEEPCNT, kKeepAliveProbes) &&
           setSocketOption(fd, SOL_SOCKET, SO_KEEPALIVE, 1);
}

bool setUserTimeLimit(int fd, int ms) {
    return setSocketOption(fd, IPPROTO_TCP, TCP_USER_TIMEOUT, ms);
}

}  // namespace Varnex
