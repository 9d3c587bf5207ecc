// Bytes 1 to 4 choose the sizes of the pieces. Functions and stream buffers make the same of the text.

#include <Varnex/streams/Base64.h>
#include <Varnex/streams/base64decodebuf.h>
#include <Varnex/streams/base64encodebuf.h>
#include <fuzz/Pieces.h>

#include <optional>
#include <sstream>

using namespace Varnex;

namespace {

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

void checkInput(std::uint8_t, Fuzz::Sizes sizes, std::string_view text) {
    const auto strict = decode(text, Base64Mode::Strict), skipped = decode(text, Base64Mode::Skip);
    Fuzz::check(!strict || skipped == strict);
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
