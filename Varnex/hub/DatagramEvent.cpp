#include <Varnex/hub/DatagramEvent.h>

#include <Varnex/events/BigEndian.h>
#include <Varnex/events/EventHeader.h>
#include <Varnex/transport/DatagramCommunicator.h>
#include <Varnex/transport/PrintLine.h>

#include <cstdint>
#include <vector>

namespace Varnex {

std::unique_ptr<Event> receiveDatagramEvent(DatagramCommunicator& from, bool& alive) {
    int n = 0;
    alive = from.dataAvail(n);
    std::vector<char> bytes(static_cast<std::size_t>(n) + 1);  // an empty datagram is taken too
    n = static_cast<int>(bytes.size());
    alive = alive && from.receive(bytes.data(), n);
    from.discardDatagram();
    if (!alive) return nullptr;
    if (n < Event::kHeaderSize ||
        loadBigEndian<std::uint32_t>(bytes.data() + kLengthOffset) != static_cast<unsigned>(n)) {
        printError("ERROR: Got a datagram that is not one Varnex event");
        return nullptr;
    }
    Event* event = nullptr;
    Event::parse(bytes.data(), n, event);
    return std::unique_ptr<Event>(event);
}

}  // namespace Varnex
