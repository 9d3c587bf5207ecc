#include <Varnex/url/URLStream.h>

#include <Varnex/url/BlockBuf.h>
#include <Varnex/url/FitInt.h>

#include <utility>

namespace Varnex {

URLImpl::Object::Object(std::unique_ptr<std::streambuf> buffer, std::string mimeType, long long contentLength)
    : mimeType_(std::move(mimeType)), contentLength_(orUnknown(contentLength)), buffer_(std::move(buffer)) {}

URLImpl::Object::~Object() = default;

URLImpl::Stream::Stream(std::unique_ptr<std::streambuf> buffer, std::string mimeType, long long contentLength)
    : std::istream(nullptr), Object(std::move(buffer), std::move(mimeType), contentLength) {
    rdbuf(Object::buffer());
    if (auto* const blocks = dynamic_cast<BlockBuf*>(Object::buffer()); blocks != nullptr) blocks->setStream(*this);
}

URLImpl::Stream::~Stream() = default;

}  // namespace Varnex
