#include <tests/support/WrapCall.h>

#include <stdlib.h>
#include <unistd.h>
#include <zlib.h>

VARNEX_WRAP(int, close, (int fd), (fd))
VARNEX_WRAP(int, mkostemp, (char* name, int flags), (name, flags))
VARNEX_WRAP(ssize_t, write, (int fd, const void* data, size_t n), (fd, data, n))
VARNEX_WRAP(int, inflateInit2_, (z_stream * stream, int bits, const char* version, int size),
            (stream, bits, version, size))
