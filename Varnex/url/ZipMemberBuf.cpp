#include <Varnex/url/ZipMemberBuf.h>

#include <Varnex/url/URLImpl.h>

#include <algorithm>
#include <utility>

#include <zlib.h>

namespace Varnex {

ZipMemberBuf::ZipMemberBuf(std::unique_ptr<std::streambuf> source, std::uint32_t size, std::uint32_t crc)
    : source_(std::move(source)), left_(size), crc_(crc), received_(::crc32_z(0, nullptr, 0)) {}

ZipMemberBuf::~ZipMemberBuf() = default;

std::streamsize ZipMemberBuf::receive(char* s, std::streamsize n) {
    const std::streamsize got = source_->sgetn(s, std::min<std::streamsize>(n, left_));
    received_ = ::crc32_z(received_, reinterpret_cast<const Bytef*>(s), static_cast<std::size_t>(got));
    left_ -= static_cast<std::uint32_t>(got);
    return got;
}

void ZipMemberBuf::checkEnd() {
    if (left_ > 0 || received_ != crc_) throw URLImpl::Exception("Invalid zip file");
}

}  // namespace Varnex
