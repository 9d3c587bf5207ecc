#include <Varnex/streams/Base64Kernel.h>

#if defined(__x86_64__)

#include <immintrin.h>

// Eight groups at a time: 24 bytes and 32 characters. Bytes are moved to where their bits are wanted by a shuffle,
// shifted there by multiplications, and turned into characters, or back, by adding what a small table has for their
// range.
#define VARNEX_AVX2 __attribute__((target("avx2")))

namespace Varnex {

namespace {

VARNEX_AVX2 __m256i twice(__m128i half) {
    return _mm256_broadcastsi128_si256(half);
}

/// 24 bytes, 12 in each half, as 32 numbers of 6 bits.
VARNEX_AVX2 __m256i split(__m256i bytes) {
    // Each group a, b, c becomes b, a, c, b: two 16-bit words that hold two numbers each.
    const __m128i order = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    const __m256i words = _mm256_shuffle_epi8(bytes, twice(order));
    const __m256i firstAndThird =
        _mm256_mulhi_epu16(_mm256_and_si256(words, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
    const __m256i secondAndFourth =
        _mm256_mullo_epi16(_mm256_and_si256(words, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(firstAndThird, secondAndFourth);
}

/// Numbers of 6 bits as characters.
VARNEX_AVX2 __m256i toCharacters(__m256i numbers) {
    // What to add for: a-z, the ten digits, "+", "/", A-Z.
    const __m128i distances = _mm_setr_epi8(71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 65, 0, 0);
    const __m256i upper = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), numbers);
    const __m256i range =
        _mm256_or_si256(_mm256_subs_epu8(numbers, _mm256_set1_epi8(51)), _mm256_and_si256(upper, _mm256_set1_epi8(13)));
    return _mm256_add_epi8(numbers, _mm256_shuffle_epi8(twice(distances), range));
}

VARNEX_AVX2 void encodeWithAvx2(char* out, const unsigned char* in, std::size_t groups) {
    // Two loads of 16 bytes, of which 12 are used, reach 4 bytes into the tenth group.
    for (; groups >= 10; groups -= 8, in += 24, out += 32) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 12));
        const __m256i characters = toCharacters(split(_mm256_set_m128i(high, low)));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), characters);
    }
    portableBase64Kernel.encode(out, in, groups);
}

/// Characters as numbers of 6 bits; false when one is outside of the alphabet.
VARNEX_AVX2 bool toNumbers(__m256i& characters) {
    // A character is outside exactly when the entries of its two halves have a bit in common.
    const __m128i lowKinds =
        _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
    const __m128i highKinds =
        _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
    // By the high half: "+", the digits, A-Z, a-z; "/" is moved to the entry before "+".
    const __m128i distances = _mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m256i slash = _mm256_set1_epi8('/');  // also a mask that keeps the low half, and the sign away
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(characters, 4), slash);
    const __m256i low = _mm256_and_si256(characters, slash);
    if (_mm256_testz_si256(_mm256_shuffle_epi8(twice(lowKinds), low), _mm256_shuffle_epi8(twice(highKinds), high)) == 0)
        return false;
    const __m256i range = _mm256_add_epi8(_mm256_cmpeq_epi8(characters, slash), high);
    characters = _mm256_add_epi8(characters, _mm256_shuffle_epi8(twice(distances), range));
    return true;
}

/// 32 numbers of 6 bits as 24 bytes, at the front.
VARNEX_AVX2 __m256i join(__m256i numbers) {
    const __m256i pairs = _mm256_maddubs_epi16(numbers, _mm256_set1_epi32(0x01400140));  // 12 bits in each 16
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));      // 24 bits in each 32
    const __m128i order = _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    return _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(groups, twice(order)),
                                       _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
}

VARNEX_AVX2 std::size_t decodeWithAvx2(unsigned char* out, const char* in, std::size_t groups) {
    std::size_t done = 0;
    // A store of 32 bytes, of which 24 count, reaches into the eleventh group.
    for (; groups - done >= 11; done += 8) {
        __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + done * 4));
        if (!toNumbers(block)) break;
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + done * 3), join(block));
    }
    return done + portableBase64Kernel.decode(out + done * 3, in + done * 4, groups - done);
}

constinit const Base64Kernel avx2Kernel = {&encodeWithAvx2, &decodeWithAvx2};

}  // namespace

const Base64Kernel* vectorBase64Kernel() {
    __builtin_cpu_init();  // may run before the constructors that the compiler's library has for it
    return __builtin_cpu_supports("avx2") ? &avx2Kernel : nullptr;
}

}  // namespace Varnex

#else

const Varnex::Base64Kernel* Varnex::vectorBase64Kernel() {
    return nullptr;
}

#endif
