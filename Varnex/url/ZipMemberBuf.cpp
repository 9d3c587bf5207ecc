#include <Varnex/url/ZipMemberBuf.h>

#include <Varnex/url/URLImpl.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include <zlib.h>

namespace Varnex {

ZipMemberBuf::ZipMemberBuf(std::unique_ptr<std::streambuf> source, std::uint32_t size, std::uint32_t crc)
    : source_(std::move(source)), left_(size), crc_(crc), received_(::crc32_z(0, nullptr, 0)) {}

ZipMemberBuf::~ZipMemberBuf() = default;

ZipMemberBuf::int_type ZipMemberBuf::underflow() {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    const std::streamsize n = receive(buffer_.data(), std::ssize(buffer_));
    setg(buffer_.data(), buffer_.data(), buffer_.data() + n);
    if (n > 0) return traits_type::to_int_type(*gptr());
    checkEnd();
    return traits_type::eof();
}

std::streamsize ZipMemberBuf::xsgetn(char* s, std::streamsize n) {
    const std::streamsize buffered = std::clamp<std::streamsize>(n, 0, egptr() - gptr());
    if (buffered > 0) std::memcpy(s, gptr(), static_cast<std::size_t>(buffered));
    gbump(static_cast<int>(buffered));
    if (n <= buffered) return buffered;
    const std::streamsize received = receive(s + buffered, n - buffered);
    if (received > 0) setg(nullptr, nullptr, nullptr);  // what it holds is no longer what comes before
    if (buffered + received == 0) checkEnd();
    return buffered + received;
}

std::streamsize ZipMemberBuf::receive(char* s, std::streamsize n) {
    const std::streamsize got = source_->sgetn(s, std::min<std::streamsize>(n, left_));
    received_ = ::crc32_z(received_, reinterpret_cast<const Bytef*>(s), static_cast<std::size_t>(got));
    left_ -= static_cast<std::uint32_t>(got);
    return got;
}

void ZipMemberBuf::checkEnd() const {
    if (left_ > 0 || received_ != crc_) throw URLImpl::Exception("Invalid zip file");
}

}  // namespace Varnex
