#include <Varnex/streams/Base64Decoder.h>

#include <Varnex/streams/Base64.h>
#include <Varnex/streams/Base64Kernel.h>

#include <algorithm>

namespace Varnex {

std::size_t Base64Decoder::decode(char* out, std::size_t room, std::string_view text) {
    char* const begin = out;
    while (!text.empty() && !ended_) {
        if (state_ == 0) {
            const std::size_t left = room - static_cast<std::size_t>(out - begin);
            auto* const bytes = reinterpret_cast<unsigned char*>(out);
            const std::size_t groups = base64Kernel->decode(bytes, text.data(), std::min(text.size() / 4, left / 3));
            text.remove_prefix(groups * 4);
            out += groups * 3;
            if (text.empty()) break;
        }
        out = decodeOne(out, text.front());
        text.remove_prefix(1);
    }
    return static_cast<std::size_t>(out - begin);
}

char* Base64Decoder::decodeOne(char* out, char c) {
    const unsigned value = index_64[static_cast<unsigned char>(c)];
    ended_ = c == '=';
    if (value > 63) return out;
    if (state_ == 1) *out++ = static_cast<char>(lastValue_ << 2 | value >> 4);
    if (state_ == 2) *out++ = static_cast<char>(lastValue_ << 4 | value >> 2);
    if (state_ == 3) *out++ = static_cast<char>(lastValue_ << 6 | value);
    state_ = (state_ + 1) % 4;
    lastValue_ = value;
    return out;
}

}  // namespace Varnex
