#pragma once

namespace Varnex {

/// How bytes travel on a serial line. `Serial` keeps one and sets it with operations of its own.
struct SerialSettings {
    enum Handshake { NoHandshake = 0, SoftwareHandshake = 1, HardwareHandshake = 2 };

    int baudRate;  ///< bits a second
    int dataBits;  ///< the flag of <termios.h>, as for the next two
    int parity;
    int stopBits;
    int handshake;  ///< one of `Handshake`
};

}  // namespace Varnex
