#pragma once

#include <string>
#include <vector>

namespace Varnex {

// Private to the library: the seam to the platform's registry of serial ports.

/// The device paths of all ports, in the order of the paths; empty also when the platform cannot tell.
std::vector<std::string> serialPorts();

/// The device path of one port, counted from 0. Empty, with an ERROR line, when there is no such port.
std::string serialPortPath(long number);

}  // namespace Varnex
