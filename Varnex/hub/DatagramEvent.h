#pragma once

#include <Varnex/events/Event.h>

#include <memory>

namespace Varnex {

class DatagramCommunicator;

// Private to the library.

/// Takes one datagram. The event, when it is exactly one of a registered type; otherwise null, after an ERROR line, and
/// nothing of the datagram is left. `alive` tells whether the channel still works.
std::unique_ptr<Event> receiveDatagramEvent(DatagramCommunicator& from, bool& alive);

}  // namespace Varnex
