#pragma once

#include <Varnex/events/Event.h>

#include <sstream>
#include <string>

/// The bytes of an event.
inline std::string wireOf(Varnex::Event& event) {
    std::ostringstream wire;
    wire << event;
    return wire.str();
}
