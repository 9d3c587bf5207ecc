#include <Varnex/url/URLStreamHandlerBuf.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace Varnex {

void URLStreamHandlerBuf::Closer::operator()(QX_URLStream* stream) const {
    if (stream->close != nullptr) stream->close(stream);
    std::free(stream);
}

URLStreamHandlerBuf::URLStreamHandlerBuf(OwnedStream stream) : stream_(std::move(stream)) {}

URLStreamHandlerBuf::~URLStreamHandlerBuf() = default;

std::streamsize URLStreamHandlerBuf::receive(char* s, std::streamsize n) {
    if (stream_->read == nullptr) return 0;
    const int count = static_cast<int>(std::min<std::streamsize>(n, std::numeric_limits<int>::max()));
    return std::clamp(stream_->read(stream_.get(), s, count), 0, count);
}

}  // namespace Varnex
