#include <Varnex/web/FileBody.h>

#include <algorithm>
#include <cerrno>

#include <unistd.h>

namespace Varnex {

long FileBody::read(char* s, unsigned long n) {
    if (length <= 0) return 0;
    const auto wanted = std::min(n, static_cast<unsigned long>(length));
    ssize_t got;
    do got = ::pread(file.get(), s, wanted, offset);
    while (got < 0 && errno == EINTR);
    if (got <= 0) return -1;
    offset += got;
    length -= got;
    return got;
}

}  // namespace Varnex
