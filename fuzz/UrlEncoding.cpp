// Byte 0 chooses how many characters at the front of the text are always encoded, and how many after them are allowed;
// bytes 1 to 4 the sizes of the pieces, which make no difference.

#include <Varnex/streams/urlbuf.h>
#include <fuzz/Pieces.h>

#include <sstream>

using namespace Varnex;

namespace {

std::string decode(std::string_view text, Fuzz::Sizes sizes) {
    std::istringstream source{std::string(text)};
    urlbuf buffer(source);
    return Fuzz::read(buffer, sizes);
}

std::string encode(std::string_view bytes, std::string_view encoded, std::string_view allowed, Fuzz::Sizes sizes) {
    std::ostringstream target;
    urlbuf buffer(target, encoded, allowed);
    Fuzz::write(buffer, bytes, sizes);
    return target.str();
}

/// Nothing but characters that may stand there, and "%" with two digits for one that may not.
void checkEncoded(std::string_view text, const std::string& plain) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (plain.find(text[i]) != std::string::npos) continue;
        Fuzz::check(text[i] == '%' && text.size() - i > 2);
        const std::size_t high = kDigits.find(text[++i]), low = kDigits.find(text[++i]);
        Fuzz::check(high < 16 && low < 16 && plain.find(static_cast<char>(high << 4 | low)) == std::string::npos);
    }
}

void checkInput(std::uint8_t choice, Fuzz::Sizes sizes, std::string_view text) {
    Fuzz::check(decode(text, sizes) == decode(text, Fuzz::Sizes(Fuzz::kLargest)));

    const std::string_view always = text.substr(0, choice >> 1 & 7);
    const std::string_view allowed = text.substr(always.size(), choice >> 4);
    std::string plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.!~* ()" + std::string(allowed);
    std::erase_if(plain, [always](char c) { return always.find(c) != std::string_view::npos; });
    const std::string encoded = encode(text, always, allowed, sizes);
    Fuzz::check(encoded == encode(text, always, allowed, Fuzz::Sizes(Fuzz::kLargest)));
    if (plain.find('%') != std::string::npos) return;  // then it cannot be told from an escape
    checkEncoded(encoded, plain);
    Fuzz::check(decode(encoded, sizes) == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
