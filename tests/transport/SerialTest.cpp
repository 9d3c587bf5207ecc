#include <Varnex/events/MessageEvent.h>
#include <Varnex/transport/PollReadable.h>
#include <tests/support/ChildProcess.h>
#include <tests/support/LoopbackPair.h>
#include <tests/support/SerialPair.h>

#include <libserialport.h>
#include <sys/ioctl.h>
#include <termios.h>

using Varnex::Serial;

// What a pseudo-terminal does not have: a line's settings, its modem lines (null: those of the device), and ports.
static termios* settings;
static int* modemLines;
static std::vector<const char*> ports = {nullptr};
static int openPortLists;

extern "C" {
int __real_tcgetattr(int fd, termios* to);
int __real_tcsetattr(int fd, int when, const termios* from);
int __real_ioctl(int fd, unsigned long request, int* value);

int __wrap_tcgetattr(int fd, termios* to) {
    if (FailingCall::due(Call::tcgetattr)) return -1;
    return settings != nullptr ? *to = *settings, 0 : __real_tcgetattr(fd, to);
}
int __wrap_tcsetattr(int fd, int when, const termios* from) {
    if (FailingCall::due(Call::tcsetattr) || when != TCSANOW) return -1;
    return settings != nullptr ? *settings = *from, 0 : __real_tcsetattr(fd, when, from);
}
int __wrap_ioctl(int fd, unsigned long request, int* value) {
    if (modemLines == nullptr || (request != TIOCMGET && request != TIOCMSET)) return __real_ioctl(fd, request, value);
    if (request == TIOCMGET) return *value = *modemLines, 0;
    return FailingCall::due(Call::ioctl) ? -1 : (*modemLines = *value, 0);
}
sp_return __wrap_sp_list_ports(sp_port*** list) {
    if (FailingCall::due(Call::sp_list_ports)) return SP_ERR_FAIL;
    ++openPortLists;
    *list = (sp_port**)ports.data();
    return SP_OK;
}
void __wrap_sp_free_port_list(sp_port**) {
    --openPortLists;
}
char* __wrap_sp_get_port_name(const sp_port* port) {
    return (char*)port;
}
}

struct SerialTest : testing::Test {
    SerialPair pair;
    Serial &line = *pair.line, &master = *pair.master;
    CapturedDiagnostics printed;
    int n = 0;

    ~SerialTest() override { settings = nullptr, modemLines = nullptr, ports = {nullptr}; }
};

TEST_F(SerialTest, BadSettingsAreRefusedWithALine) {
    EXPECT_FALSE(line.setBaudRate(14400) || line.setDataBits(9) || line.setDataBits(4) || line.setParity("Mark") ||
                 line.setParity("") || line.setStopBits(0) || line.setHandshake("XON") || line.setWriteTimeout(-1));
    EXPECT_EQ(printed.errors(),
              "ERROR: Invalid baud rate 14400 (must be 110, 300, 600, 1200, 2400, 4800, 9600, 19200, 38400, 57600 or "
              "115200)\n"
              "ERROR: Invalid number of data bits 9 (must be 5, 6, 7 or 8)\n"
              "ERROR: Invalid number of data bits 4 (must be 5, 6, 7 or 8)\n"
              "ERROR: Invalid parity mark (must be none, even or odd)\n"
              "ERROR: Invalid parity  (must be none, even or odd)\n"
              "ERROR: Invalid number of stop bits 0 (must be 1 or 2)\n"
              "ERROR: Invalid handshake xon (must be none, software or hardware)\n");
}

TEST_F(SerialTest, EachSettingReachesTheLineWhateverWasThereBefore) {
    constexpr tcflag_t kXon = IXON | IXOFF | IXANY, kOff = BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IMAXBEL;
    constexpr tcflag_t kControl = CSIZE | CSTOPB | PARENB | PARODD | CRTSCTS | HUPCL | CREAD | CBAUD;
    constexpr tcflag_t kInput = kXon | kOff | INPCK | IGNBRK | 1u << 31;  // where glibc notes a speed of 0
    const std::tuple<bool (Serial::*)(int), int, tcflag_t> numbers[] = {
        {&Serial::setDataBits, 5, CS5}, {&Serial::setDataBits, 6, CS6},          {&Serial::setDataBits, 7, CS7},
        {&Serial::setDataBits, 8, CS8}, {&Serial::setStopBits, 2, CS8 | CSTOPB}, {&Serial::setStopBits, 1, CS8}};
    const std::pair<int, tcflag_t> rates[] = {{110, B110},     {300, B300},       {600, B600},     {1200, B1200},
                                              {2400, B2400},   {4800, B4800},     {19200, B19200}, {38400, B38400},
                                              {57600, B57600}, {115200, B115200}, {9600, B9600}};
    const std::tuple<bool (Serial::*)(std::string), std::vector<std::string>, tcflag_t, tcflag_t> texts[] = {
        {&Serial::setParity, {"e", "EVEN"}, PARENB, INPCK},
        {&Serial::setParity, {"O", "odd"}, PARENB | PARODD, INPCK},
        {&Serial::setParity, {"n", "None"}, 0, 0},
        {&Serial::setHandshake, {"s", "sw", "Soft", "software"}, 0, kXon},
        {&Serial::setHandshake, {"H", "hw", "hard", "hardware"}, CRTSCTS, 0},
        {&Serial::setHandshake, {"n", "none"}, 0, 0}};
    for (const tcflag_t before : {tcflag_t{0}, ~tcflag_t{0}}) {
        const auto check = [&](bool set, tcflag_t control, tcflag_t input, tcflag_t speed = B9600) {
            termios all{before, before, before, before, 0, {}, 0, 0};
            all.c_cc[VMIN] = 100;
            settings = &all;
            EXPECT_TRUE(set && !line.setBaudRate(14400) && !line.setDataBits(9) && !line.setStopBits(0));
            EXPECT_TRUE(!line.setParity("x") && !line.setHandshake("") && line.open());
            EXPECT_EQ(all.c_cflag, (before & ~kControl) | control | HUPCL | CREAD | speed);
            EXPECT_EQ(all.c_iflag, (before & ~kInput) | input | IGNBRK);
            EXPECT_EQ(all.c_lflag, before & ~tcflag_t{ECHO | ISIG | ICANON});
            EXPECT_EQ(all.c_oflag, before & ~tcflag_t{OPOST});
            EXPECT_TRUE(all.c_cc[VSTART] == (input == kXon ? 17 : 0) && all.c_cc[VSTOP] == (input == kXon ? 19 : 0));
            EXPECT_EQ(all.c_cc[VMIN], 1);
        };
        check(true, CS8, 0);
        for (const auto& [rate, code] : rates) check(line.setBaudRate(rate), CS8, 0, code);
        for (const auto& [set, number, control] : numbers) check((line.*set)(number), control, 0);
        for (const auto& [set, names, control, input] : texts)
            for (const auto& name : names) check((line.*set)(name), CS8 | control, input);
    }
}

TEST_F(SerialTest, AnOpenThatFailsTellsWhyAndClosesThePort) {
    const std::string path = line.getPort();
    const std::tuple<std::string, Call, int, std::string> cases[] = {
        {"/nowhere", Call::accept4, 0, "Cannot open serial port!"},
        {path + '\0', Call::accept4, 0, "Cannot open serial port!"},
        {"/dev/null", Call::accept4, 0, "Port is not a tty!"},
        {"", Call::sp_list_ports, 0, "Serial: Port 0 does not exist"},
        {" +4\r\n", Call::accept4, 0, "Serial: Port 4 does not exist"},
        {"-1", Call::accept4, 0, "Serial: Port -1 does not exist"},
        {path, Call::tcgetattr, EIO, "Cannot get termio structure (Input/output error)!"},
        {path, Call::cfsetispeed, EINVAL, "Cannot set input speed (Invalid argument)!"},
        {path, Call::cfsetospeed, EINVAL, "Cannot set output speed (Invalid argument)!"},
        {path, Call::tcsetattr, EIO, "Cannot set termio structure (Input/output error)!"},
    };
    const auto before = openDescriptors();
    std::string expected;
    for (const auto& [port, call, error, message] : cases) {
        EXPECT_TRUE(line.setPort(path) && line.open());
        const FailingCall failing(call, error);
        EXPECT_TRUE(line.setPort(port) && !line.open() && !line.isOpen()) << message;
        EXPECT_EQ(printed.errors(), expected += "ERROR: " + message + "\n");
    }
    EXPECT_TRUE(line.setPort(path) && line.open() && openDescriptors() == before && openPortLists == 0);
}

TEST_F(SerialTest, PortsAreCountedInTheOrderOfTheirPaths) {
    const std::string path = line.getPort();
    ports = {"/dev/ttyS10", path.c_str(), "/dev/b", "/dev/a", nullptr};
    EXPECT_EQ(Serial::getPorts(), (std::vector<std::string>{"/dev/a", "/dev/b", path, "/dev/ttyS10"}));
    EXPECT_TRUE(line.setPort(" 2\n") && line.open() && line.getPort() == "2");
    EXPECT_TRUE(sends(line, "x") && master.waitForData() && received(master) == "x");
    ports = {"/dev/ttyS10", path.c_str(), nullptr};  // the number is looked up anew
    EXPECT_FALSE(line.open());
    EXPECT_TRUE(line.setPort(" \t") && line.open() && line.getPort().empty() && openPortLists == 0);
    EXPECT_TRUE(line.setPort("\r\n " + path + "\t") && line.open() && line.getPort() == path);
}

TEST_F(SerialTest, EachFailingCallHasItsOutcome) {
    using Operation = int (*)(Serial&);
    const Operation send = [](Serial& serial) { return sends(serial, "x") + 0; };
    const Operation receive = [](Serial& serial) { return received(serial) == "x" ? 1 : 0; };
    const Operation wait = [](Serial& serial) { return serial.waitForData(-1); };
    const Operation nudge = [](Serial& serial) { return serial.breakWait(), 0; };
    const Operation close = [](Serial& serial) { return serial.close() + 2 * serial.isOpen(); };
    const std::tuple<Call, int, int, Operation, std::string> cases[] = {
        {Call::write, EIO, -1, send, "0 ERROR: Cannot send (Input/output error)\n"},
        {Call::write, EINTR, -1, send, "1 "},
        {Call::write, EAGAIN, -1, send, "1 "},
        {Call::write, 0, 0, send, "0 "},
        {Call::read, EIO, -1, receive, "0 ERROR: Cannot receive (Input/output error)\n"},
        {Call::read, EAGAIN, -1, receive, "0 ERROR: Cannot receive (Resource temporarily unavailable)\n"},
        {Call::read, EINTR, -1, receive, "1 "},
        {Call::poll, ENOMEM, -1, wait, "0 ERROR: Cannot select\n"},
        {Call::pipe2, EMFILE, -1, wait, "0 ERROR: Cannot open pipe!\n"},
        {Call::pipe2, EMFILE, -1, nudge, "0 ERROR: Cannot open pipe!\nERROR: Cannot set event\n"},
        {Call::close, EIO, -1, close, "0 ERROR: While closing (Input/output error)!\n"},
    };
    for (const auto& [call, error, result, operation, outcome] : cases) {
        SerialPair fresh;
        const CapturedDiagnostics texts;
        EXPECT_TRUE(sends(*fresh.master, "x") && Varnex::pollReadable(fresh.line->getDescriptor(), 60000) == 1);
        const FailingCall failing(call, error, result);
        const std::string value = std::to_string(operation(*fresh.line)) + " ";
        EXPECT_EQ(value + texts.errors(), outcome);
    }
}

TEST_F(SerialTest, ModemLinesAreReadAndWritten) {
    bool on = true;
    EXPECT_FALSE(line.setRTS(true) || line.setDTR(true) || line.getCTS(on) || !on) << "a pty has none";
    int lines = TIOCM_DSR;
    modemLines = &lines;
    EXPECT_TRUE(line.setRTS(true) && lines == (TIOCM_DSR | TIOCM_RTS) && line.setDTR(true) && line.setRTS(false));
    EXPECT_EQ(lines, TIOCM_DSR | TIOCM_DTR);
    EXPECT_TRUE(line.setDTR(false) && lines == TIOCM_DSR);
    const std::pair<bool (Serial::*)(bool&) const, int> inputs[] = {{&Serial::getCTS, TIOCM_CTS},
                                                                    {&Serial::getDSR, TIOCM_DSR},
                                                                    {&Serial::getRI, TIOCM_RI},
                                                                    {&Serial::getDCD, TIOCM_CD}};
    for (const auto& [get, bit] : inputs)
        for (const bool high : {true, false})
            EXPECT_TRUE(((lines = high ? bit : ~bit), (line.*get)(on)) && on == high) << bit;
    const FailingCall failing(Call::ioctl, EIO);
    EXPECT_FALSE(line.setRTS(true));
}

static void expectLargeEvent(Serial& from, Serial& to) {
    Varnex::MessageEvent sent(7, std::string(32000, 'x').c_str());  // more than a terminal buffers
    std::thread sender([&] { EXPECT_TRUE(sent.send(&from)); });
    Varnex::Event* event = nullptr;
    EXPECT_TRUE(Varnex::Event::receive(&to, event));
    sender.join();
    const std::unique_ptr<Varnex::Event> owner(event);
    const auto* message = dynamic_cast<Varnex::MessageEvent*>(event);
    EXPECT_TRUE(message != nullptr && message->getText() == sent.getText());
}

TEST_F(SerialTest, EventsLargerThanTheLinesBufferTravelBothWays) {
    expectLargeEvent(line, master);
    expectLargeEvent(master, line);
}

TEST_F(SerialTest, ASendToALineThatTakesNothingEndsAtItsLimit) {
    const std::string bytes(100000, 'x');
    EXPECT_TRUE(line.setWriteTimeout(20));
    EXPECT_TRUE(!line.send(bytes.data(), n = 100000) && n > 0 && n < 100000);
    EXPECT_EQ(printed.errors(), "ERROR: Cannot send (Resource temporarily unavailable)\n");
}

TEST_F(SerialTest, AnUnpluggedLineEndsSendsAndTheStream) {
    const std::string bytes(100000, 'x');
    std::thread sender([&] { EXPECT_FALSE(line.send(bytes.data(), n = 100000)); });
    EXPECT_TRUE(master.waitForData() && master.close());
    sender.join();
    EXPECT_TRUE(line.waitForData() && received(line).empty() && !line.dataAvail(n));
    EXPECT_EQ(printed.errors(), "ERROR: Cannot send (Input/output error)\n");
}

TEST_F(SerialTest, EventsCrossARelayOfAnotherProgram) {
    if (std::system("command -v socat >/dev/null") != 0) GTEST_SKIP() << "socat is not installed";
    ChildProcess socat("socat -d -d pty,rawer pty,rawer");
    Serial ends[2];
    for (Serial& end : ends) {
        const std::string note = socat.text(ChildProcess::Error);
        EXPECT_TRUE(end.setPort(note.substr(note.find("/dev/"))) && end.open()) << note;
    }
    expectLargeEvent(ends[0], ends[1]);
    expectLargeEvent(ends[1], ends[0]);
}
