#include <Varnex/transport/Serial.h>

#include <Varnex/transport/LowerCase.h>
#include <Varnex/transport/PollReadable.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/SendAll.h>
#include <Varnex/transport/SerialLine.h>
#include <Varnex/transport/SerialPorts.h>
#include <Varnex/transport/SystemError.h>
#include <Varnex/transport/WaitForData.h>
#include <Varnex/transport/WaitToSend.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace Varnex {

namespace {

constexpr WaitMessages kWaitMessages{"ERROR: Cannot open pipe!", &printError};

template <typename Key>
struct Choice {
    Key key;
    int setting;
};

constexpr Choice<int> kDataBits[] = {{5, CS5}, {6, CS6}, {7, CS7}, {8, CS8}};
constexpr Choice<int> kStopBits[] = {{1, 0}, {2, CSTOPB}};
constexpr Choice<std::string_view> kParities[] = {
    {"n", 0}, {"none", 0}, {"e", PARENB}, {"even", PARENB}, {"o", PARENB | PARODD}, {"odd", PARENB | PARODD}};
constexpr Choice<std::string_view> kHandshakes[] = {
    {"n", SerialSettings::NoHandshake},          {"none", SerialSettings::NoHandshake},
    {"s", SerialSettings::SoftwareHandshake},    {"sw", SerialSettings::SoftwareHandshake},
    {"soft", SerialSettings::SoftwareHandshake}, {"software", SerialSettings::SoftwareHandshake},
    {"h", SerialSettings::HardwareHandshake},    {"hw", SerialSettings::HardwareHandshake},
    {"hard", SerialSettings::HardwareHandshake}, {"hardware", SerialSettings::HardwareHandshake}};

/// Sets what stands beside `key`; false when it is not among the choices.
template <typename Key, std::size_t count>
bool choose(int& setting, const Key& key, const Choice<Key> (&choices)[count]) {
    const auto* const end = choices + count;
    const auto* const chosen = std::find_if(choices, end, [&](const auto& choice) { return choice.key == key; });
    if (chosen == end) return false;
    setting = chosen->setting;
    return true;
}

bool fail(std::string_view line) {
    printError(line);
    return false;
}

void trim(std::string& text) {
    constexpr char kBlanks[] = " \t\r\n";
    text.erase(text.find_last_not_of(kBlanks) + 1);
    text.erase(0, text.find_first_not_of(kBlanks));
}

/// The device path that a trimmed port text stands for; empty, with an ERROR line, when there is none.
std::string pathOf(const std::string& port) {
    if (port.empty()) return serialPortPath(0);
    char* end = nullptr;
    const long number = std::strtol(port.c_str(), &end, 10);
    return end == port.c_str() + port.size() ? serialPortPath(number) : port;
}

UniqueFd openDevice(const std::string& path) {
    if (path.find('\0') != std::string::npos) return {};
    int fd;
    do fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    while (fd < 0 && errno == EINTR);
    return UniqueFd(fd);
}

}  // namespace

std::vector<std::string> Serial::getPorts() {
    return serialPorts();
}

Serial::Serial(const std::string& port)
    : port_(port), settings_{kDefaultBaudRate, CS8, 0, 0, SerialSettings::NoHandshake} {}

Serial::~Serial() {
    close();
}

bool Serial::close() {
    const int error = descriptor_.close();
    return error == 0 || fail(withErrno("ERROR: While closing", error) + "!");
}

bool Serial::open() {
    trim(port_);
    const std::string path = pathOf(port_);
    close();
    if (path.empty()) return false;
    UniqueFd device = openDevice(path);
    if (!device.isOpen()) return fail("ERROR: Cannot open serial port!");
    if (::isatty(device.get()) == 0) return fail("ERROR: Port is not a tty!");
    if (!configureLine(device.get(), settings_)) return false;
    descriptor_ = std::move(device);
    return true;
}

bool Serial::send(const void* data, int& n) {
    if (!isOpen() || data == nullptr || n < 0) {
        n = 0;
        return false;
    }
    return sendAll(data, n, [this](const char* bytes, std::size_t size) { return writeSome(bytes, size); });
}

/// One write(2) that takes bytes; the line does not block, so a full buffer is waited for here.
long Serial::writeSome(const char* bytes, std::size_t size) const {
    ssize_t taken;
    do taken = ::write(descriptor_.get(), bytes, size);
    while (taken < 0 && (errno == EINTR || (errno == EAGAIN && waitToWrite(descriptor_.get(), writeTimeoutMs_))));
    return taken;
}

bool Serial::trySend(const Chunk* chunks, int count, int& sent) {
    sent = 0;
    if (!isOpen()) return false;
    for (int i = 0; i < count; ++i) {
        ssize_t taken;
        do taken = ::write(descriptor_.get(), chunks[i].data, static_cast<std::size_t>(chunks[i].size));
        while (taken < 0 && errno == EINTR);
        if (taken < 0) return errno == EAGAIN || fail(withErrno("ERROR: Cannot send", errno));
        sent += static_cast<int>(taken);
        if (taken < chunks[i].size) break;
    }
    return true;
}

void Serial::abort() {
    ::tcflush(descriptor_.get(), TCOFLUSH);
    breakWait();
}

bool Serial::receive(void* data, int& n) {
    if (data == nullptr || !isOpen() || n <= 0) return false;
    ssize_t received;
    do received = ::read(descriptor_.get(), data, static_cast<std::size_t>(n));
    while (received < 0 && errno == EINTR);
    if (received < 0) return fail(withErrno("ERROR: Cannot receive", errno));
    n = static_cast<int>(received);
    return true;
}

bool Serial::waitForData() {
    return waitForData(kNoTimeLimit) == WaitData;
}

void Serial::breakWait() {
    Varnex::breakWait(wakeUp_, kWaitMessages);
}

int Serial::waitForData(int ms) {
    return Varnex::waitForData(descriptor_.get(), wakeUp_, ms, 0, kWaitMessages);
}

bool Serial::dataAvail(int& n) {
    return ::ioctl(descriptor_.get(), FIONREAD, &n) == 0;
}

bool Serial::setPort(const std::string& port) {
    port_ = port;
    return true;
}

bool Serial::setBaudRate(int rate) {
    if (!isBaudRate(rate))
        return fail("ERROR: Invalid baud rate " + std::to_string(rate) +
                    " (must be 110, 300, 600, 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200)");
    settings_.baudRate = rate;
    return true;
}

bool Serial::setDataBits(int count) {
    return choose(settings_.dataBits, count, kDataBits) ||
           fail("ERROR: Invalid number of data bits " + std::to_string(count) + " (must be 5, 6, 7 or 8)");
}

bool Serial::setParity(std::string parity) {
    makeLowerCase(parity);
    return choose<std::string_view>(settings_.parity, parity, kParities) ||
           fail("ERROR: Invalid parity " + parity + " (must be none, even or odd)");
}

bool Serial::setStopBits(int count) {
    return choose(settings_.stopBits, count, kStopBits) ||
           fail("ERROR: Invalid number of stop bits " + std::to_string(count) + " (must be 1 or 2)");
}

bool Serial::setHandshake(std::string handshake) {
    makeLowerCase(handshake);
    return choose<std::string_view>(settings_.handshake, handshake, kHandshakes) ||
           fail("ERROR: Invalid handshake " + handshake + " (must be none, software or hardware)");
}

bool Serial::setWriteTimeout(int ms) {
    if (ms < 0) return false;
    writeTimeoutMs_ = ms;
    return true;
}

bool Serial::setRTS(bool on) {
    return setModemLine(TIOCM_RTS, on);
}

bool Serial::setDTR(bool on) {
    return setModemLine(TIOCM_DTR, on);
}

bool Serial::getCTS(bool& on) const {
    return getModemLine(TIOCM_CTS, on);
}

bool Serial::getDSR(bool& on) const {
    return getModemLine(TIOCM_DSR, on);
}

bool Serial::getRI(bool& on) const {
    return getModemLine(TIOCM_RNG, on);
}

bool Serial::getDCD(bool& on) const {
    return getModemLine(TIOCM_CAR, on);
}

bool Serial::setModemLine(int line, bool on) {
    int lines = 0;
    if (::ioctl(descriptor_.get(), TIOCMGET, &lines) != 0) return false;
    lines = on ? lines | line : lines & ~line;
    return ::ioctl(descriptor_.get(), TIOCMSET, &lines) == 0;
}

bool Serial::getModemLine(int line, bool& on) const {
    int lines = 0;
    if (::ioctl(descriptor_.get(), TIOCMGET, &lines) != 0) return false;
    on = (lines & line) != 0;
    return true;
}

}  // namespace Varnex
