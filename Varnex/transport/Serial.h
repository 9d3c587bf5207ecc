#pragma once

#include <Varnex/transport/Communicator.h>
#include <Varnex/transport/NonBlockingSender.h>
#include <Varnex/transport/SerialSettings.h>
#include <Varnex/transport/UniqueFd.h>
#include <Varnex/transport/WakeUpPipe.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Varnex {

/// A byte channel over a serial line (RS-232), or any other terminal device.
///
/// Closed at first, and again after `close` or an `open` that fails. Settings are made before `open`. One thread may
/// send while another waits and receives; `breakWait` is for any thread; everything else is for the owner. Closing does
/// not end another thread's wait: break it first. Throws nothing: failures print an ERROR line on the error stream and
/// return false. A line tells no end of the stream, but a device that is unplugged does: `receive` is true with 0.
class VARNEX_API Serial : public Communicator, public NonBlockingSender {
public:
    static constexpr int kDefaultBaudRate = 9600;
    static constexpr int kNoWriteTimeout = 0;

    /// The device paths of the platform's serial ports; a port's number is its place here, counted from 0. May open
    /// each of them for a moment to find out whether it is there.
    [[nodiscard]] static std::vector<std::string> getPorts();

    /// 9600 baud, 8 data bits, no parity, 1 stop bit, no handshake.
    explicit Serial(const std::string& port = "");

    // The order of the virtual operations is binary interface: append, never reorder.
    ~Serial() override;

    /// True also when closed already; closed in any case. The wake-up pipe, with the wake-ups in it, stays.
    bool close() override;

    using Sender::send;
    /// Sends `n` bytes, blocking until the system took all of them; `n` tells how many it took, also on failure.
    /// False: not open, `data` is null, or write(2) failed.
    bool send(const void* data, int& n) override;

    /// One read(2) for at most `n` bytes. It never blocks: without data it fails, so wait first.
    /// False: not open, `data` is null, `n` is 0, or read(2) failed.
    bool receive(void* data, int& n) override;

    bool waitForData() override;
    void breakWait() override;
    int waitForData(int ms) override;
    bool dataAvail(int& n) override;

    bool trySend(const Chunk* chunks, int count, int& sent) override;
    [[nodiscard]] int getSendDescriptor() const override { return getDescriptor(); }
    /// A line has no end: throws away what it has not sent yet, and breaks the wait.
    void abort() override;

    /// Opens the port, closing it first when it is open, and puts it in raw mode with the settings made. Blanks and
    /// line ends around the stored port text go away. False: no such port, no terminal, or it refuses a setting.
    bool open();

    [[nodiscard]] bool isOpen() const { return descriptor_.isOpen(); }
    /// For polls and settings of the application's own; -1 when closed, never to be closed by the caller.
    [[nodiscard]] int getDescriptor() const { return descriptor_.get(); }

    // The settings below take effect at the next `open`. A bad value is refused with an ERROR line; the earlier one
    // stays then.

    /// A device path, a number as in `getPorts`, looked up anew by each `open`, or nothing for port 0. Always true.
    bool setPort(const std::string& port);
    [[nodiscard]] const std::string& getPort() const { return port_; }

    /// 110, 300, 600, 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200 bits a second.
    bool setBaudRate(int rate);
    /// 5 to 8.
    bool setDataBits(int count);
    /// "none", "even" or "odd", or the first letter, in any case.
    bool setParity(std::string parity);
    /// 1 or 2.
    bool setStopBits(int count);
    /// "none"; "software" (XON and XOFF), "soft", "sw"; "hardware" (RTS and CTS), "hard", "hw"; or the first letter, in
    /// any case. The software handshake takes the bytes 17 and 19 for itself: not for events or other binary data.
    bool setHandshake(std::string handshake);

    /// Ends a `send` that makes no progress for `ms` milliseconds, as when a handshake holds the line; the default,
    /// `kNoWriteTimeout`, waits for ever. Holds at once. False, without a line, when negative.
    bool setWriteTimeout(int ms);

    // The modem lines of the open port. False, without a line, when closed or when the device has none.

    /// Set a line; from one thread at a time.
    bool setRTS(bool on);
    bool setDTR(bool on);

    /// Tell a line's state; `on` stays as it is on failure.
    bool getCTS(bool& on) const;
    bool getDSR(bool& on) const;
    bool getRI(bool& on) const;
    bool getDCD(bool& on) const;

private:
    [[nodiscard]] long writeSome(const char* bytes, std::size_t size) const;
    bool setModemLine(int line, bool on);
    bool getModemLine(int line, bool& on) const;

    std::string port_;
    SerialSettings settings_;
    UniqueFd descriptor_;
    WakeUpPipe wakeUp_;
    int writeTimeoutMs_ = kNoWriteTimeout;
};

}  // namespace Varnex
