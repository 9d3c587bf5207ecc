#include <Varnex/hub/HubTarget.h>

namespace Varnex {

HubTarget::~HubTarget() = default;

bool HubTarget::close() {
    return true;
}

bool HubTarget::send(const void* data, int& n) {
    return (hub_.*operation_)(connection_, data, n);
}

}  // namespace Varnex
