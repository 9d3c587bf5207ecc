#include <Varnex/url/URLStreamHandlerBuf.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace Varnex {

void URLStreamHandlerBuf::Closer::operator()(QX_URLStream* stream) const {
    if (stream->close != nullptr) stream->close(stream);
    std::free(stream);
}

URLStreamHandlerBuf::URLStreamHandlerBuf(QX_URLStream* stream)
    : stream_(stream), buffer_(std::make_unique<char[]>(kBufferSize)) {}

URLStreamHandlerBuf::~URLStreamHandlerBuf() {
    stream_.reset();  // before the buffer, as the stream's owner expects
}

URLStreamHandlerBuf::int_type URLStreamHandlerBuf::underflow() {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    const std::streamsize n = receive(buffer_.get(), kBufferSize);
    setg(buffer_.get(), buffer_.get(), buffer_.get() + n);
    return n == 0 ? traits_type::eof() : traits_type::to_int_type(*gptr());
}

std::streamsize URLStreamHandlerBuf::xsgetn(char* s, std::streamsize n) {
    const std::streamsize buffered = std::min<std::streamsize>(n, egptr() - gptr());
    if (buffered > 0) std::memcpy(s, gptr(), static_cast<std::size_t>(buffered));
    gbump(static_cast<int>(buffered));
    std::streamsize total = buffered;
    while (total < n) {
        const std::streamsize received = receive(s + total, n - total);
        if (received == 0) break;
        setg(nullptr, nullptr, nullptr);  // what it holds is no longer what comes before
        total += received;
    }
    return total;
}

std::streamsize URLStreamHandlerBuf::receive(char* s, std::streamsize n) {
    if (stream_->read == nullptr) return 0;
    const int count = static_cast<int>(std::min<std::streamsize>(n, std::numeric_limits<int>::max()));
    return std::clamp(stream_->read(stream_.get(), s, count), 0, count);
}

}  // namespace Varnex
