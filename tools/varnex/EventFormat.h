#pragma once

#include <chrono>
#include <string>

namespace Varnex {
class Event;
}

namespace VarnexTool {

using WallTime = std::chrono::system_clock::time_point;

/// Turns received events into lines without line ends. A value; any thread.
struct EventFormat {
    bool json = false;    ///< one JSON object a line, ASCII only, in place of the readable form
    bool colour = false;  ///< of the readable form

    /// `peer` is where it came from. Bytes that are no UTF-8 become U+FFFD in JSON, and floats that are no numbers
    /// null.
    [[nodiscard]] std::string line(const Varnex::Event& event, const std::string& peer, WallTime received) const;
};

}  // namespace VarnexTool
