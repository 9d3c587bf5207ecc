#include <Varnex/streams/Digest.h>

#include <openssl/evp.h>

#include <algorithm>
#include <limits>

namespace Varnex {

namespace {

bool digest(const EVP_MD* kind, unsigned int expected, const char* data, unsigned int length, char* out) {
    unsigned char result[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (data == nullptr && length > 0) return false;
    if (EVP_Digest(data, length, result, &size, kind, nullptr) != 1 || size != expected) return false;
    std::copy_n(result, size, out);
    return true;
}

}  // namespace

bool calcSHA1Hash(int otherLength, unsigned int length, const char* data, char* out) {
    constexpr unsigned int kMost = std::numeric_limits<int>::max();  // above it a negative number was meant
    if (length > kMost || (length == 0 && otherLength < 0)) return false;
    return digest(EVP_sha1(), 20, data, length != 0 ? length : static_cast<unsigned int>(otherLength), out);
}

// The first 16 is the bytes of a digest, the second those of a challenge.
bool calcMD5Hash(int, unsigned int, const char* data, char* out) {
    return digest(EVP_md5(), 16, data, 16, out);
}

}  // namespace Varnex
