#include <Varnex/hub/Discovery.h>

namespace Varnex {

void prepareDiscovery(Multicast& channel) {
    channel.setAddress(kDiscoveryGroup);
    channel.setPort(kDiscoveryPort);
    channel.setInterface(InetAddress::getLocalHost());
}

bool match(long maskA, long maskB, int idA, int idB) {
    const bool common = (static_cast<std::uint32_t>(maskA) & static_cast<std::uint32_t>(maskB)) != 0;
    return common && static_cast<std::uint16_t>(idA) == static_cast<std::uint16_t>(idB);
}

void drainWakeUps(Receiver& channel) {
    while (channel.waitForData(0) == Receiver::WaitBroken) {
    }
}

}  // namespace Varnex
