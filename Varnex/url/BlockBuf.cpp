#include <Varnex/url/BlockBuf.h>

#include <Varnex/url/URLImpl.h>

#include <algorithm>
#include <cstring>

namespace Varnex {

BlockBuf::BlockBuf() : buffer_(std::make_unique<char[]>(kBufferSize)) {}

BlockBuf::~BlockBuf() = default;

BlockBuf::int_type BlockBuf::underflow() {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    const std::streamsize n = receive(buffer_.get(), kBufferSize);
    setg(buffer_.get(), buffer_.get(), buffer_.get() + n);
    if (n > 0) return traits_type::to_int_type(*gptr());
    checkEnd();
    return traits_type::eof();
}

std::streamsize BlockBuf::xsgetn(char* s, std::streamsize n) {
    std::streamsize total = std::clamp<std::streamsize>(n, 0, egptr() - gptr());
    if (total > 0) std::memcpy(s, gptr(), static_cast<std::size_t>(total));
    gbump(static_cast<int>(total));
    if (total >= n) return total;
    setg(nullptr, nullptr, nullptr);  // what it holds is no longer what comes before
    std::streamsize received = 0;
    do {
        received = receive(s + total, n - total);
        total += received;
    } while (received > 0 && total < n);
    if (total == 0)
        checkEnd();
    else if (total < n)
        tellStreamOfDamage();
    return total;
}

std::streamsize BlockBuf::readSome(char* s, std::streamsize n) {
    if (gptr() < egptr()) return xsgetn(s, std::min<std::streamsize>(n, egptr() - gptr()));
    setg(nullptr, nullptr, nullptr);
    const std::streamsize received = receive(s, n);
    if (received == 0) checkEnd();
    return received;
}

void BlockBuf::tellStreamOfDamage() {
    if (stream_ == nullptr) return;
    try {
        checkEnd();
    } catch (const URLImpl::Exception&) {
        if ((stream_->exceptions() & std::ios_base::badbit) != 0) throw;  // its reader wants the words
        stream_->setstate(std::ios_base::badbit);
    }
}

}  // namespace Varnex
