// Byte 0 chooses the width of lines, bytes 1 to 4 the sizes of the pieces. Functions and stream buffers agree.

#include <Varnex/streams/Base64.h>
#include <Varnex/streams/base64decodebuf.h>
#include <Varnex/streams/base64encodebuf.h>
#include <fuzz/Pieces.h>

#include <optional>
#include <sstream>

using namespace Varnex;

namespace {

std::string encode(std::string_view bytes) {
    std::vector<char> out(encodedBase64Size(bytes.size()));
    encodeBase64(out.data(), bytes.data(), bytes.size());
    return {out.begin(), out.end()};
}

std::optional<std::string> decode(std::string_view text, Base64Mode mode) {
    unsigned long needed = 0;
    (void)decodeBase64(nullptr, needed, text, mode);
    std::vector<char> out(needed);
    unsigned long size = needed;
    const Base64Result result = decodeBase64(out.data(), size, text, mode);
    const bool good = result == Base64Result::Decoded;
    Fuzz::check(good ? size == needed : result == Base64Result::BadInput && size == 0);
    return good ? std::optional<std::string>(std::in_place, out.begin(), out.end()) : std::nullopt;
}

/// The input as text.
void checkDecoding(std::string_view text, Fuzz::Sizes sizes) {
    const auto strict = decode(text, Base64Mode::Strict), skipped = decode(text, Base64Mode::Skip);
    Fuzz::check(!strict || (encode(*strict) == text && skipped == strict));
    std::ostringstream written;
    base64decodebuf writer(written);
    Fuzz::write(writer, text, sizes);
    std::istringstream source{std::string(text)};
    base64encodebuf reader(source);
    const std::string read = Fuzz::read(reader, sizes);
    Fuzz::check(read == written.str() && (!skipped || read == *skipped));
    source.clear();
    const std::size_t end = std::min(text.find('='), text.size() - 1) + 1;
    Fuzz::check(std::string(std::istreambuf_iterator<char>(source), {}) == text.substr(end));
}

/// The input as bytes.
void checkEncoding(std::string_view bytes, Fuzz::Sizes sizes, std::streamsize width) {
    const std::string text = encode(bytes);
    Fuzz::check(decode(text, Base64Mode::Strict) == bytes && decode(text, Base64Mode::Skip) == bytes);
    std::istringstream source{std::string(bytes)};
    base64decodebuf reader(source);
    Fuzz::check(Fuzz::read(reader, sizes) == text);
    std::ostringstream pieces, whole;
    for (const bool inPieces : {true, false}) {
        std::ostringstream& target = inPieces ? pieces : whole;
        target.width(width);
        base64encodebuf writer(target, "\r\n");
        Fuzz::write(writer, bytes, inPieces ? sizes : Fuzz::Sizes(Fuzz::kLargest));
    }
    Fuzz::check(pieces.str() == whole.str() && decode(whole.str(), Base64Mode::Skip) == bytes);
    Fuzz::check(width > 0 || whole.str() == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, [](std::uint8_t choice, Fuzz::Sizes sizes, std::string_view text) {
        checkDecoding(text, sizes);
        checkEncoding(text, sizes, choice >> 1);
    });
}
