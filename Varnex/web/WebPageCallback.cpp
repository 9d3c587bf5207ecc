#include <Varnex/web/WebPageCallback.h>

namespace Varnex {

WebPageCallback::~WebPageCallback() = default;

bool WebPageCallback::create(WebClient* client, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) {
    if (requestFunction_ != nullptr) return requestFunction_(request, reply);
    return clientFunction_ != nullptr && clientFunction_(client, request, reply);
}

WebPageCallback* WebPageCallback::clone() const {
    return new WebPageCallback(*this);
}

}  // namespace Varnex
