#include <Varnex/web/WebPageRedirection.h>

#include <utility>

namespace Varnex {

WebPageRedirection::WebPageRedirection(std::string location) : location_(std::move(location)) {}

WebPageRedirection::~WebPageRedirection() = default;

bool WebPageRedirection::create(const ProtocolHTTP::Request&, ProtocolHTTP::Reply& reply) {
    reply.code = 302;
    reply.header.setParam("Location", location_);
    return true;
}

WebPageRedirection* WebPageRedirection::clone() const {
    return new WebPageRedirection(*this);
}

}  // namespace Varnex
