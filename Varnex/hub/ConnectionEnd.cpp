#include <Varnex/hub/ConnectionEnd.h>

#include <Varnex/transport/BufferedCommunicator.h>
#include <Varnex/transport/DatagramCommunicator.h>

namespace Varnex {

bool isAtEnd(Communicator& connection) {
    int n = 0;
    return connection.dataAvail(n) && n == 0 && dynamic_cast<DatagramCommunicator*>(&connection) == nullptr;
}

NonBlockingSender* nonBlockingSenderOf(Communicator* connection) {
    if (auto* const buffered = dynamic_cast<BufferedCommunicator*>(connection))
        return nonBlockingSenderOf(buffered->getInner());
    return dynamic_cast<NonBlockingSender*>(connection);
}

}  // namespace Varnex
