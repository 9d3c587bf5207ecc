#include <Varnex/transport/SerialLine.h>

#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/SerialSettings.h>
#include <Varnex/transport/SystemError.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string_view>

#include <termios.h>

namespace Varnex {

namespace {

constexpr cc_t kStartCharacter = 17;  // DC1
constexpr cc_t kStopCharacter = 19;   // DC3

constexpr struct Speed {
    int rate;
    speed_t code;
} kSpeeds[] = {{110, B110},   {300, B300},     {600, B600},     {1200, B1200},   {2400, B2400},    {4800, B4800},
               {9600, B9600}, {19200, B19200}, {38400, B38400}, {57600, B57600}, {115200, B115200}};

const Speed* findSpeed(int rate) {
    return std::find_if(std::begin(kSpeeds), std::end(kSpeeds), [rate](const Speed& s) { return s.rate == rate; });
}

void choose(tcflag_t& flags, tcflag_t which, bool on) {
    flags = on ? flags | which : flags & ~which;
}

// CLOCAL stays as the device had it.
void setControlFlags(termios& line, const SerialSettings& settings) {
    line.c_cflag &= ~static_cast<tcflag_t>(CSIZE | CSTOPB | PARENB | PARODD);
    line.c_cflag |= static_cast<tcflag_t>(settings.dataBits | settings.parity | settings.stopBits);
    choose(line.c_cflag, CRTSCTS, settings.handshake == SerialSettings::HardwareHandshake);
    line.c_cflag |= HUPCL | CREAD;
}

void setInputFlags(termios& line, const SerialSettings& settings) {
    const bool software = settings.handshake == SerialSettings::SoftwareHandshake;
    choose(line.c_iflag, INPCK, settings.parity != 0);
    choose(line.c_iflag, IXON | IXOFF | IXANY, software);
    choose(line.c_iflag, BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IMAXBEL, false);
    line.c_iflag |= IGNBRK;
    if (!software) return;
    line.c_cc[VSTART] = kStartCharacter;
    line.c_cc[VSTOP] = kStopCharacter;
}

void setRaw(termios& line) {
    choose(line.c_lflag, ECHO | ISIG | ICANON, false);
    choose(line.c_oflag, OPOST, false);
    line.c_cc[VMIN] = 1;  // or a larger number, left by another program, would hide the last bytes from a wait
    line.c_cc[VTIME] = 0;
}

bool fail(std::string_view what, int error) {
    printError(withErrno(what, error) + "!");
    return false;
}

}  // namespace

bool isBaudRate(int rate) {
    return findSpeed(rate) != std::end(kSpeeds);
}

bool configureLine(int fd, const SerialSettings& settings) {
    termios line{};
    if (::tcgetattr(fd, &line) != 0) return fail("ERROR: Cannot get termio structure", errno);
    const speed_t speed = findSpeed(settings.baudRate)->code;
    if (::cfsetispeed(&line, speed) != 0) return fail("ERROR: Cannot set input speed", errno);
    if (::cfsetospeed(&line, speed) != 0) return fail("ERROR: Cannot set output speed", errno);
    setControlFlags(line, settings);
    setInputFlags(line, settings);
    setRaw(line);
    return ::tcsetattr(fd, TCSANOW, &line) == 0 || fail("ERROR: Cannot set termio structure", errno);
}

}  // namespace Varnex
