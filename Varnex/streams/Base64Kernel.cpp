#include <Varnex/streams/Base64Kernel.h>

#include <Varnex/streams/Base64.h>

#include <array>
#include <cstring>

namespace Varnex {

namespace {

using Pair = std::array<char, 2>;

/// The two characters of each 12 bits: half as many look-ups as one for each 6.
constexpr std::array<Pair, 4096> kPairs = [] {
    std::array<Pair, 4096> pairs;
    for (std::size_t i = 0; i < pairs.size(); ++i) pairs[i] = {basis_64[i >> 6], basis_64[i & 63]};
    return pairs;
}();

void encodePortably(char* out, const unsigned char* in, std::size_t groups) {
    for (; groups > 0; --groups, in += 3, out += 4) {
        std::memcpy(out, &kPairs[static_cast<unsigned>(in[0] << 4 | in[1] >> 4)], 2);
        std::memcpy(out + 2, &kPairs[static_cast<unsigned>((in[1] & 0x0F) << 8 | in[2])], 2);
    }
}

unsigned valueOf(char c) {
    return index_64[static_cast<unsigned char>(c)];
}

std::size_t decodePortably(unsigned char* out, const char* in, std::size_t groups) {
    for (std::size_t i = 0; i < groups; ++i, in += 4, out += 3) {
        const unsigned first = valueOf(in[0]), second = valueOf(in[1]), third = valueOf(in[2]), fourth = valueOf(in[3]);
        if ((first | second | third | fourth) > 63) return i;
        out[0] = static_cast<unsigned char>(first << 2 | second >> 4);
        out[1] = static_cast<unsigned char>(second << 4 | third >> 2);
        out[2] = static_cast<unsigned char>(third << 6 | fourth);
    }
    return groups;
}

}  // namespace

constinit const Base64Kernel portableBase64Kernel = {&encodePortably, &decodePortably};

constinit const Base64Kernel* base64Kernel = &portableBase64Kernel;

namespace {

[[maybe_unused]] const bool chosen = [] {
    if (const Base64Kernel* vector = vectorBase64Kernel()) base64Kernel = vector;
    return true;
}();

}  // namespace

}  // namespace Varnex
