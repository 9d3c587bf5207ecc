#include <tests/support/WrapCall.h>

#include <csignal>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <termios.h>

VARNEX_WRAP(int, accept4, (int fd, sockaddr* address, socklen_t* size, int flags), (fd, address, size, flags))
VARNEX_WRAP(int, bind, (int fd, const sockaddr* address, socklen_t size), (fd, address, size))
VARNEX_WRAP(int, cfsetispeed, (termios * settings, speed_t speed), (settings, speed))
VARNEX_WRAP(int, cfsetospeed, (termios * settings, speed_t speed), (settings, speed))
VARNEX_WRAP(int, close, (int fd), (fd))
VARNEX_WRAP(int, connect, (int fd, const sockaddr* address, socklen_t size), (fd, address, size))
VARNEX_WRAP(int, getnameinfo, (const sockaddr* a, socklen_t n, char* h, socklen_t hn, char* s, socklen_t sn, int flags),
            (a, n, h, hn, s, sn, flags))
VARNEX_WRAP(int, getsockname, (int fd, sockaddr* address, socklen_t* size), (fd, address, size))
VARNEX_WRAP(int, listen, (int fd, int backlog), (fd, backlog))
VARNEX_WRAP(int, pipe2, (int* ends, int flags), (ends, flags))
VARNEX_WRAP(int, poll, (pollfd * descriptors, nfds_t count, int ms), (descriptors, count, ms))
VARNEX_WRAP(ssize_t, read, (int fd, void* data, size_t size), (fd, data, size))
VARNEX_WRAP(ssize_t, recv, (int fd, void* data, size_t size, int flags), (fd, data, size, flags))
VARNEX_WRAP(ssize_t, recvfrom, (int fd, void* data, size_t size, int flags, sockaddr* from, socklen_t* n),
            (fd, data, size, flags, from, n))
VARNEX_WRAP(ssize_t, sendto, (int fd, const void* data, size_t size, int flags, const sockaddr* to, socklen_t n),
            (fd, data, size, flags, to, n))
VARNEX_WRAP(ssize_t, send, (int fd, const void* data, size_t size, int flags), (fd, data, size, flags))
VARNEX_WRAP(ssize_t, sendmsg, (int fd, const msghdr* message, int flags), (fd, message, flags))
VARNEX_WRAP(int, setsockopt, (int fd, int level, int name, const void* value, socklen_t n), (fd, level, name, value, n))
VARNEX_WRAP(sighandler_t, signal, (int number, sighandler_t handler), (number, handler))
VARNEX_WRAP(int, socket, (int family, int type, int protocol), (family, type, protocol))
VARNEX_WRAP(ssize_t, write, (int fd, const void* data, size_t size), (fd, data, size))
