#include <Varnex/streams/Base64.h>

#include <Varnex/streams/Base64Decoder.h>
#include <Varnex/streams/Base64Kernel.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Varnex {

void encodeBase64(char* out, const void* data, unsigned long length) {
    const auto* in = static_cast<const unsigned char*>(data);
    const std::size_t groups = length / 3;
    base64Kernel->encode(out, in, groups);
    out += groups * 4;
    in += groups * 3;
    const std::size_t left = length % 3;
    if (left == 0) return;
    const int second = left == 2 ? in[1] : 0;
    out[0] = basis_64[in[0] >> 2];
    out[1] = basis_64[(in[0] & 0x03) << 4 | second >> 4];
    out[2] = left == 2 ? basis_64[(second & 0x0F) << 2] : '=';
    out[3] = '=';
}

namespace {

std::size_t valueOf(char c) {
    return index_64[static_cast<unsigned char>(c)];
}

/// The last group, of which `padding` characters are "=". False: a character or an unused bit is wrong.
bool decodePaddedGroup(char* out, std::string_view group, std::size_t padding) {
    const std::size_t first = valueOf(group[0]), second = valueOf(group[1]);
    const std::size_t third = padding == 2 ? 0 : valueOf(group[2]);
    const std::size_t unused = padding == 2 ? second & 0x0F : third & 0x03;
    if ((first | second | third) > 63 || unused != 0) return false;
    out[0] = static_cast<char>(first << 2 | second >> 4);
    if (padding == 1) out[1] = static_cast<char>(second << 4 | third >> 2);
    return true;
}

Base64Result decodeStrictly(char* out, unsigned long& size, std::string_view text) {
    const unsigned long room = std::exchange(size, 0);
    const std::size_t end = text.find_last_not_of('=') + 1;
    const std::size_t padding = text.size() - end;
    if (text.size() % 4 != 0 || padding > 2) return Base64Result::BadInput;
    const std::size_t needed = text.size() / 4 * 3 - padding;
    if (needed > room) {
        size = needed;
        return Base64Result::TooSmall;
    }
    const std::size_t groups = end / 4;
    if (base64Kernel->decode(reinterpret_cast<unsigned char*>(out), text.data(), groups) != groups)
        return Base64Result::BadInput;
    if (padding > 0 && !decodePaddedGroup(out + groups * 3, text.substr(groups * 4), padding))
        return Base64Result::BadInput;
    size = needed;
    return Base64Result::Decoded;
}

/// What so many characters of the alphabet decode to; a last one alone to nothing.
constexpr std::size_t decodedSize(std::size_t characters) {
    return characters / 4 * 3 + characters % 4 * 3 / 4;
}

std::size_t decodedSize(std::string_view text) {
    return decodedSize(static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return valueOf(c) < 64; })));
}

Base64Result decodeSkipping(char* out, unsigned long& size, std::string_view text) {
    const unsigned long room = std::exchange(size, 0);
    text = text.substr(0, text.find('='));
    const bool surelyFits = decodedSize(text.size()) <= room;
    if (const std::size_t needed = surelyFits ? 0 : decodedSize(text); needed > room) {
        size = needed;
        return Base64Result::TooSmall;
    }
    Base64Decoder decoder;
    const std::size_t written = decoder.decode(out, room, text);
    if (decoder.hasLoneCharacter()) return Base64Result::BadInput;
    size = written;
    return Base64Result::Decoded;
}

}  // namespace

Base64Result decodeBase64(void* out, unsigned long& size, std::string_view text, Base64Mode mode) {
    auto* const bytes = static_cast<char*>(out);
    return mode == Base64Mode::Strict ? decodeStrictly(bytes, size, text) : decodeSkipping(bytes, size, text);
}

}  // namespace Varnex
