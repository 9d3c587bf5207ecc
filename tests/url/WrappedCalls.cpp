#include <tests/support/TestFolder.h>
#include <tests/support/WrapCall.h>

#include <stdlib.h>
#include <unistd.h>
#include <zlib.h>

VARNEX_WRAP(int, close, (int fd), (fd))
VARNEX_WRAP(ssize_t, write, (int fd, const void* data, size_t n), (fd, data, n))
VARNEX_WRAP(int, inflateInit2_, (z_stream * stream, int bits, const char* version, int size),
            (stream, bits, version, size))

extern "C" int __real_mkostemp(char* name, int flags);
extern "C" int __wrap_mkostemp(char* name, int flags) {
    if (FailingCall::due(Call::mkostemp) != nullptr) return -1;
    const int fd = __real_mkostemp(name, flags);
    TestFolder::made.push_back(name);
    return fd;
}
