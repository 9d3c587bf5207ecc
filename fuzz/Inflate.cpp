// The text is raw deflate; bytes 1 to 4 choose the sizes of the pieces in which it is read.

#include <Varnex/url/inflatebuf.h>
#include <fuzz/Pieces.h>

#include <sstream>

#include <zlib.h>

using namespace Varnex;

namespace {

/// Bytes of the output that are looked at.
constexpr std::size_t kEnough = 1 << 17;

std::unique_ptr<std::istream> streamOf(std::string_view text) {
    return std::make_unique<std::istringstream>(std::string(text));
}

/// What zlib makes of all the input in one call; whether it is all of the output.
std::string_view inflateAtOnce(std::string_view text, bool& isWhole) {
    static char out[kEnough];
    z_stream stream{};
    Fuzz::check(::inflateInit2(&stream, -15) == Z_OK);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(out);
    stream.avail_out = kEnough;
    isWhole = ::inflate(&stream, Z_NO_FLUSH) == Z_STREAM_END;
    ::inflateEnd(&stream);
    return {out, kEnough - stream.avail_out};
}

void checkInput(std::uint8_t, Fuzz::Sizes sizes, std::string_view text) {
    bool isWhole = false;
    const std::string_view bytes = inflateAtOnce(text, isWhole);
    inflatebuf pieces(streamOf(text)), block(streamOf(text));
    Fuzz::check(std::string_view(Fuzz::read(pieces, sizes, kEnough)).substr(0, kEnough) == bytes);
    std::vector<char> out(Fuzz::pieceSize(sizes, 0));
    const bool isGood = block.uncompress(out.data(), static_cast<unsigned>(out.size()));
    Fuzz::check(isGood == (out.size() <= bytes.size() || (isWhole && !bytes.empty())));
    const std::size_t size = std::min(out.size(), bytes.size());
    Fuzz::check(std::string_view(out.data(), size) == bytes.substr(0, size));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
