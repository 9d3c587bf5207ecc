#include <Varnex/web/WebLimits.h>

namespace Varnex {

WebLimits WebLimits::hardened() {
    WebLimits limits;
    limits.maxClients = 1024;
    limits.requestTimeout = 10;
    limits.maxKeepAliveRequests = 1000;
    limits.keepAliveTimeout = 5;
    limits.receiveTimeout = 10;
    limits.sendTimeout = 10;
    limits.maxHead = 16'384;
    limits.maxBody = 1UL << 20U;
    return limits;
}

}  // namespace Varnex
