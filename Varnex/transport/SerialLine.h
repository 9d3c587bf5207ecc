#pragma once

namespace Varnex {

struct SerialSettings;

// Private to the library: what of a serial line is set through termios.

/// Whether a line can be set to so many bits a second.
bool isBaudRate(int rate);

/// Puts an open terminal in raw mode with these settings, at once. False, with an ERROR line, when it refuses.
bool configureLine(int fd, const SerialSettings& settings);

}  // namespace Varnex
