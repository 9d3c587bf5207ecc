#include <Varnex/streams/SecureRandom.h>

#include <openssl/rand.h>

#include <algorithm>
#include <limits>

namespace Varnex {

bool secureRandom(void* out, std::size_t n) {
    auto* next = static_cast<unsigned char*>(out);
    while (n > 0) {
        const auto size = std::min<std::size_t>(n, std::numeric_limits<int>::max());
        if (RAND_bytes(next, static_cast<int>(size)) != 1) return false;
        next += size;
        n -= size;
    }
    return true;
}

}  // namespace Varnex
