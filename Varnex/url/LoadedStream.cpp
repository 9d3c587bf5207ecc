#include <Varnex/url/LoadedStream.h>

#include <Varnex/url/BlockBuf.h>

#include <utility>

namespace Varnex {

LoadedStream::LoadedStream(std::unique_ptr<std::streambuf> buffer, std::string mimeType, Answer answer)
    : std::istream(nullptr),
      Stream(std::move(buffer), std::move(mimeType), answer.length),
      answer_(std::move(answer)) {}

LoadedStream::~LoadedStream() = default;

std::streamsize LoadedStream::readSome(char* s, std::streamsize n) {
    auto* const blocks = dynamic_cast<BlockBuf*>(buffer());
    return blocks != nullptr ? blocks->readSome(s, n) : buffer()->sgetn(s, n);
}

}  // namespace Varnex
