// The text is an archive; bytes 2 to 4 choose the sizes of the pieces in which members are read.

#include <Varnex/streams/Base64.h>
#include <Varnex/url/URL.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLStream.h>
#include <Varnex/url/URLZip.h>
#include <fuzz/Pieces.h>

using namespace Varnex;

namespace {

/// Bytes of a member that are looked at.
constexpr std::size_t kEnough = 1 << 18;

/// The names of what looks like members, no more than a few.
std::vector<std::string> namesIn(std::string_view content) {
    constexpr std::size_t kNameSizeAt = 28, kNameAt = 46, kMost = 8;
    std::vector<std::string> found{"a.txt"};
    const auto next = [content](std::size_t from) { return content.find(std::string_view("PK\1\2"), from); };
    for (std::size_t at = next(0); at < content.size() && found.size() < kMost; at = next(at + 1))
        if (content.size() - at > kNameAt)
            found.emplace_back(content.substr(at + kNameAt, static_cast<unsigned char>(content[at + kNameSizeAt])));
    return found;
}

/// Reads the member, or enough of it, which is no more than is announced; whether it is good, as far as it was read.
bool read(URLImpl::Stream& stream, Fuzz::Sizes sizes, std::string& text) {
    for (std::size_t i = 0; stream && text.size() < kEnough; ++i) {
        std::string piece(std::max<std::size_t>(Fuzz::pieceSize(sizes, i), 1), '\0');
        if (Fuzz::pieceSize(sizes, i) == 0)
            stream.get(piece[0]);
        else
            stream.read(piece.data(), std::ssize(piece));
        text.append(piece, 0, static_cast<std::size_t>(stream.gcount()));
    }
    const auto announced = static_cast<std::size_t>(stream.getContentLength());  // huge when it is not known
    Fuzz::check(text.size() <= announced);
    if (text.size() >= kEnough) return true;
    Fuzz::check(stream.bad() || text.size() == announced);
    return !stream.bad();
}

bool readAtOnce(const URLImpl& url, std::string_view expected) try {
    const URLImpl::Memory memory = url.read2mem();
    Fuzz::check(std::string_view(memory.getData(), static_cast<std::size_t>(memory.getSize())) == expected);
    return true;
} catch (const URLImpl::Exception&) {
    return false;
}

void checkMember(const URLImpl& url, Fuzz::Sizes sizes) try {
    const std::unique_ptr<URLImpl::Stream> stream(url.open()), again(url.open());
    std::string text, same;
    const bool isGood = read(*stream, sizes, text);
    Fuzz::check(read(*again, Fuzz::Sizes(Fuzz::kLargest), same) == isGood);
    Fuzz::check(text.substr(0, kEnough) == same.substr(0, kEnough));
    const int announced = stream->getContentLength();
    if (announced < 0 || announced >= static_cast<int>(kEnough)) return;
    Fuzz::check(readAtOnce(url, text) == isGood);
} catch (const URLImpl::Exception&) {
}

void checkInput(std::uint8_t, Fuzz::Sizes sizes, std::string_view text) {
    std::string archive(encodedBase64Size(text.size()), '\0');
    encodeBase64(archive.data(), text.data(), text.size());
    for (std::string name : namesIn(text)) {
        URLImpl::encodeUnsafeCharacters(name);
        checkMember(*URL::resolve({}, "zip:data:;base64," + archive + "!/" + name), sizes);
    }
    URLZip::clearCache();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
