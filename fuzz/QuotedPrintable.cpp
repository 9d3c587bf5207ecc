// Byte 0 chooses the mode, bytes 1 to 4 the sizes of the pieces, which make no difference.

#include <Varnex/streams/quotedprintabledecodebuf.h>
#include <fuzz/Pieces.h>

#include <sstream>

using namespace Varnex;

namespace {

void checkInput(std::uint8_t choice, Fuzz::Sizes sizes, std::string_view text) {
    const bool headerMode = (choice & 2) != 0;
    std::stringbuf pieces, whole;
    quotedprintabledecodebuf inPieces(&pieces, headerMode), inOne(&whole, headerMode);
    Fuzz::write(inPieces, text, sizes);
    Fuzz::check(inOne.sputn(text.data(), std::ssize(text)) == std::ssize(text));
    Fuzz::check(pieces.str() == whole.str() && whole.view().size() <= text.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
