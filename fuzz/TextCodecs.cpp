// Quoted-printable and URL-encoded texts. Byte 0 chooses the mode, bytes 1 to 4 the sizes of the pieces, which make no
// difference.

#include <Varnex/streams/quotedprintabledecodebuf.h>
#include <Varnex/streams/urlbuf.h>
#include <fuzz/Pieces.h>

#include <sstream>

using namespace Varnex;

namespace {

void checkQuotedPrintable(std::string_view text, Fuzz::Sizes sizes, bool headerMode) {
    std::stringbuf pieces, whole;
    quotedprintabledecodebuf inPieces(&pieces, headerMode), inOne(&whole, headerMode);
    Fuzz::write(inPieces, text, sizes);
    Fuzz::check(inOne.sputn(text.data(), std::ssize(text)) == std::ssize(text));
    Fuzz::check(pieces.str() == whole.str() && whole.view().size() <= text.size());
}

std::string decode(std::string_view text, Fuzz::Sizes sizes) {
    std::istringstream source{std::string(text)};
    urlbuf buffer(source);
    return Fuzz::read(buffer, sizes);
}

/// Whatever is encoded comes back, too.
void checkUrlEncoding(std::string_view text, Fuzz::Sizes sizes) {
    Fuzz::check(decode(text, sizes) == decode(text, Fuzz::Sizes(Fuzz::kLargest)));
    std::ostringstream target;
    urlbuf buffer(target);
    Fuzz::write(buffer, text, sizes);
    Fuzz::check(decode(target.str(), sizes) == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, [](std::uint8_t choice, Fuzz::Sizes sizes, std::string_view text) {
        checkQuotedPrintable(text, sizes, (choice & 2) != 0);
        checkUrlEncoding(text, sizes);
    });
}
