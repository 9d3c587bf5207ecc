// The text is a chunked body, in the engine's coding and in the standard's, and the bytes of one; bytes 1 to 4 choose
// the sizes of the pieces, and byte 0 the limit of a body.

#include <Varnex/protocols/ChunkedReader.h>
#include <Varnex/protocols/ChunkedWriter.h>
#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/streams/ioStream.h>
#include <fuzz/HttpText.h>

using namespace Varnex;

namespace {

/// The bytes of all chunks, however large the pieces are.
std::string readEngine(std::string_view text, Fuzz::Sizes sizes) {
    Fuzz::TextPeer peer(text);
    ProtocolHTTP engine(nullptr);
    engine.setCommunicator(&peer);
    std::string all;
    for (std::size_t i = 0;; ++i) {
        std::vector<unsigned char> piece(std::max<std::size_t>(Fuzz::pieceSize(sizes, i), 1));
        int n = static_cast<int>(piece.size());
        const bool isGood = engine.receiveChunkedBody(piece.data(), n);
        Fuzz::check(n >= 0 && static_cast<std::size_t>(n) <= piece.size());
        all.append(piece.begin(), piece.begin() + n);
        if (!isGood || n == 0) return all;
    }
}

/// All that a complete body gives, or that it is not one, and what is left.
std::string readStandard(const std::string& text, Fuzz::Sizes sizes, std::uint64_t maxBody) {
    std::istringstream source(text);
    ChunkedReader reader(source);
    reader.setMaxBody(maxBody);
    std::string all;
    try {
        all = Fuzz::read(reader, sizes);
    } catch (const std::ios_base::failure&) {
    }
    Fuzz::check(!reader.isComplete() || maxBody == 0 || all.size() <= maxBody);
    all += reader.isComplete() ? "|" + Fuzz::shown(reader.getTrailer()) : "damaged";
    return all.append(std::istreambuf_iterator<char>(source), {});
}

void checkInput(std::uint8_t choice, Fuzz::Sizes sizes, std::string_view input) {
    const Fuzz::Sizes largest(Fuzz::kLargest);
    Fuzz::check(readEngine(input, sizes) == readEngine(input, largest));
    const std::string text(input);
    Fuzz::check(readStandard(text, sizes, choice) == readStandard(text, largest, choice));
    std::ostringstream wire;
    ChunkedWriter writer(wire, sizes[0]);
    Fuzz::write(writer, input, sizes);
    Fuzz::check(writer.finish());
    Fuzz::check(readStandard(wire.str() + "rest", sizes, 0) == text + "|\r\nrest");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
