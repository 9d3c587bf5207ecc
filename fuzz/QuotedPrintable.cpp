// Byte 0 chooses the mode, bytes 1 to 4 the sizes of the pieces. These change nothing, and what is encoded comes back.

#include <Varnex/streams/quotedprintabledecodebuf.h>
#include <Varnex/streams/quotedprintableencodebuf.h>
#include <fuzz/Pieces.h>

#include <sstream>

using namespace Varnex;

namespace {

template <class Buffer>
std::string convert(std::string_view text, bool headerMode, Fuzz::Sizes sizes) {
    std::stringbuf pieces, whole;
    Buffer inPieces(&pieces, headerMode), inOne(&whole, headerMode);
    Fuzz::write(inPieces, text, sizes);
    Fuzz::check(inOne.sputn(text.data(), std::ssize(text)) == std::ssize(text));
    Fuzz::check(pieces.str() == whole.str());
    return whole.str();
}

/// What encoding keeps of the bytes: a bare line feed becomes CR LF, a carriage return at the end waits for ever.
std::string kept(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        if (c == '\n' && !text.ends_with('\r')) text += '\r';
        text += c;
    }
    if (text.ends_with('\r')) text.pop_back();
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, [](std::uint8_t choice, Fuzz::Sizes sizes, std::string_view text) {
        const bool headerMode = (choice & 2) != 0;
        const std::string encoded = convert<quotedprintableencodebuf>(text, headerMode, sizes);
        Fuzz::check(encoded.size() <= 3 * text.size());
        Fuzz::check(convert<quotedprintabledecodebuf>(encoded, headerMode, sizes) == kept(text));
        Fuzz::check(convert<quotedprintabledecodebuf>(text, headerMode, sizes).size() <= text.size());
    });
}
