// The text is raw deflate, read in pieces, and again the bytes of which a stretch is taken along with the steps to take
// there. Byte 0 chooses where the stretch begins, byte 4 its length, 255 the greatest.

#include <Varnex/url/inflatebuf.h>
#include <Varnex/url/storebuf.h>
#include <fuzz/Pieces.h>

#include <limits>
#include <sstream>

#include <zlib.h>

using namespace Varnex;

namespace {

using Traits = std::streambuf::traits_type;

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

void checkInflating(std::string_view text, Fuzz::Sizes sizes) {
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

/// A stretch of a stream, and what it has to be.
struct Stretch {
    storebuf buffer;
    unsigned long length;
    std::string_view bytes;
    std::size_t at = 0;

    void read(std::size_t n) {
        const std::string_view rest = bytes.substr(at);
        Fuzz::check(buffer.in_avail() <= std::ssize(rest) && (buffer.in_avail() > 0) == !rest.empty());
        if (n == 0) return Fuzz::check(buffer.sgetc() == (rest.empty() ? Traits::eof() : Traits::to_int_type(rest[0])));
        std::string block(n, '\0');
        block.resize(static_cast<std::size_t>(buffer.sgetn(block.data(), std::ssize(block))));
        Fuzz::check(block == rest.substr(0, n));
        at += block.size();
    }

    void putBack(int c) {
        const int last = at == 0 ? Traits::eof() : Traits::to_int_type(bytes[at - 1]);
        const bool isAny = c == 0, isGood = last != Traits::eof() && (isAny || (last & 15) == c);
        const char wanted = isGood ? Traits::to_char_type(last) : static_cast<char>(~last);
        const int result = isAny ? buffer.sungetc() : buffer.sputbackc(wanted);
        Fuzz::check(result == (isGood ? last : Traits::eof()));
        if (isGood) --at;
    }

    void seek(int offset, std::ios_base::seekdir from) {
        const auto start = static_cast<double>(from == std::ios_base::beg   ? 0
                                               : from == std::ios_base::cur ? at
                                                                            : length);
        const double target = start + offset;
        const bool isThere = target >= 0 && target <= static_cast<double>(bytes.size());
        const auto position = std::streamoff(buffer.pubseekoff(offset, from, std::ios_base::in));
        Fuzz::check(static_cast<double>(position) == (isThere ? target : -1));
        if (isThere) at = static_cast<std::size_t>(position);
    }
};

void checkStretch(std::string_view text, std::size_t offset, unsigned long length) {
    offset = std::min(offset, text.size());
    Stretch stretch{{streamOf(text), offset, length}, length, text.substr(offset, length)};
    for (const char step : text) {
        const int argument = static_cast<unsigned char>(step) >> 3;
        switch (step & 7) {
            case 0:
                stretch.seek(argument, std::ios_base::beg);
                break;
            case 1:
                stretch.seek(argument - 16, std::ios_base::cur);
                break;
            case 2:
                stretch.seek(argument - 16, std::ios_base::end);
                break;
            case 3:
            case 4:
                stretch.putBack(argument & 15);
                break;
            default:
                stretch.read(static_cast<std::size_t>(argument));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, [](std::uint8_t choice, Fuzz::Sizes sizes, std::string_view text) {
        checkInflating(text, sizes);
        checkStretch(text, choice >> 1, sizes[3] == 255 ? std::numeric_limits<unsigned long>::max() : sizes[3]);
    });
}
