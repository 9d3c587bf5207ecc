#include <tests/support/WrapCall.h>

#include <sys/socket.h>

VARNEX_WRAP(int, accept4, (int fd, sockaddr* address, socklen_t* size, int flags), (fd, address, size, flags))
