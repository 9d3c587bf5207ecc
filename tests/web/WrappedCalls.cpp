#include <tests/support/WrapCall.h>

#include <sys/socket.h>

VARNEX_WRAP(int, accept4, (int fd, sockaddr* address, socklen_t* length, int flags), (fd, address, length, flags))
