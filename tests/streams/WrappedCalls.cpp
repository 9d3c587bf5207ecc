#include <tests/support/WrapCall.h>

#include <openssl/evp.h>

VARNEX_WRAP(int, EVP_Digest,
            (const void* data, size_t n, unsigned char* out, unsigned* size, const EVP_MD* kind, ENGINE* e),
            (data, n, out, size, kind, e))
VARNEX_WRAP(int, RAND_bytes, (unsigned char* out, int n), (out, n))
