#include <Varnex/web/WebPageStatic.h>

#include <utility>

namespace Varnex {

WebPageStatic::WebPageStatic(const void* data, std::uint32_t size, std::string contentType, unsigned long status)
    : data_(static_cast<const char*>(data)), size_(size), contentType_(std::move(contentType)), status_(status) {}

WebPageStatic::~WebPageStatic() = default;

bool WebPageStatic::create(const ProtocolHTTP::Request&, ProtocolHTTP::Reply& reply) {
    reply.code = status_;
    reply.header.setParam("Content-Type", contentType_);
    reply.body.assign(size_ == 0 ? "" : data_, size_);
    return true;
}

WebPageStatic* WebPageStatic::clone() const {
    return new WebPageStatic(*this);
}

}  // namespace Varnex
