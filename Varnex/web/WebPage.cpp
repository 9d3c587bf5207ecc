#include <Varnex/web/WebPage.h>

namespace Varnex {

WebPage::~WebPage() = default;

bool WebPage::create(WebClient*, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) {
    return create(request, reply);
}

bool WebPage::create(const ProtocolHTTP::Request&, ProtocolHTTP::Reply&) {
    return false;
}

}  // namespace Varnex
