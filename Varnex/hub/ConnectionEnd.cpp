#include <Varnex/hub/ConnectionEnd.h>

#include <Varnex/transport/BufferedCommunicator.h>
#include <Varnex/transport/DatagramCommunicator.h>

namespace Varnex {

namespace {

/// What a connection reads and writes in the end.
Communicator* innermost(Communicator* connection) {
    auto* const buffered = dynamic_cast<BufferedCommunicator*>(connection);
    return buffered == nullptr ? connection : innermost(buffered->getInner());
}

}  // namespace

bool isDatagramChannel(Communicator* connection) {
    return dynamic_cast<DatagramCommunicator*>(innermost(connection)) != nullptr;
}

bool isAtEnd(Communicator& connection) {
    if (isDatagramChannel(&connection)) return false;
    int n = 0;
    if (connection.dataAvail(n)) return n == 0;
    return nonBlockingSenderOf(&connection) != nullptr;  // of ours it can be told, unless the device is gone
}

NonBlockingSender* nonBlockingSenderOf(Communicator* connection) {
    return dynamic_cast<NonBlockingSender*>(innermost(connection));
}

}  // namespace Varnex
