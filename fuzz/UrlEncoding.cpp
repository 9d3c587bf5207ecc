// Bytes 1 to 4 choose the sizes of the pieces in which the text is decoded; they make no difference.

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

/// Whatever is encoded comes back, too.
void checkInput(std::uint8_t, Fuzz::Sizes sizes, std::string_view text) {
    Fuzz::check(decode(text, sizes) == decode(text, Fuzz::Sizes(Fuzz::kLargest)));
    std::ostringstream target;
    urlbuf buffer(target);
    Fuzz::write(buffer, text, sizes);
    Fuzz::check(decode(target.str(), sizes) == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
