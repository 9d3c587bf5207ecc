#include "Command.h"
#include "Dial.h"
#include "EventLog.h"
#include "Failure.h"
#include "LibraryMessages.h"
#include "SerialBridge.h"

#include <iostream>

namespace VarnexTool {

namespace {

class SerialCommand : public Command {
public:
    explicit SerialCommand(CLI::App& parent);
    void run() override;

private:
    static void listPorts();
    void configure(Varnex::Serial& line) const;
    void bridge(Varnex::Serial& line, const Endpoint& to) const;

    std::string port_;
    std::string where_;
    bool list_ = false;
    int baud_ = Varnex::Serial::kDefaultBaudRate;
    int bits_ = 8;
    int stopBits_ = 1;
    std::string parity_ = "none";
    std::string handshake_ = "none";
    double connectSeconds_ = kDefaultConnectSeconds;
};

SerialCommand::SerialCommand(CLI::App& parent)
    : Command(parent, "serial", "Carry bytes between a serial line and a hub, unchanged, in both directions") {
    app().add_option("PORT", port_, "The serial port, by path such as /dev/ttyUSB0 or by its number in --list");
    app().add_option("HOST:PORT", where_, "The hub, such as 127.0.0.1:4711 or [::1]:4711");
    app().add_flag("--list", list_, "List the serial ports of this machine instead, from number 0 on");
    const auto whole = wholeNumberFrom(0, 1'000'000'000);
    app().add_option("--baud", baud_, "Bits a second, 110 to 115200")->transform(whole)->capture_default_str();
    app().add_option("--bits", bits_, "Data bits, 5 to 8; events need 8")->transform(whole)->capture_default_str();
    app().add_option("--parity", parity_, "none, even or odd")->capture_default_str();
    app().add_option("--stop", stopBits_, "Stop bits, 1 or 2")->transform(whole)->capture_default_str();
    app()
        .add_option("--handshake", handshake_, "none, hardware or software; software is not for events")
        ->capture_default_str();
    app()
        .add_option("--connect-timeout", connectSeconds_, "Seconds to wait for the connection")
        ->check(numberFrom(0.001, 1e6))
        ->capture_default_str();
}

void SerialCommand::run() {
    if (list_) return listPorts();
    if (where_.empty()) throw UsageError("PORT and HOST:PORT are required, or --list");
    const Endpoint to = Endpoint::toConnect(where_);
    Varnex::Serial line(port_);
    configure(line);
    if (!line.open()) throw Failure(withLibraryMessage(port_));
    bridge(line, to);
}

void SerialCommand::configure(Varnex::Serial& line) const {
    const bool isRight = line.setBaudRate(baud_) && line.setDataBits(bits_) && line.setParity(parity_) &&
                         line.setStopBits(stopBits_) && line.setHandshake(handshake_);
    if (!isRight) throw UsageError(takeLibraryMessage());
}

void SerialCommand::bridge(Varnex::Serial& line, const Endpoint& to) const {
    Varnex::Client client;
    StopWatcher stop(std::chrono::seconds(0), [&] {
        line.breakWait();
        client.breakWait();
    });
    dial(client, to, std::chrono::duration<double>(connectSeconds_));
    EventLog::note(line.getPort() + " connected to " + to.text());
    SerialBridge bridge({line, line.getPort()}, {client, to.text()}, stop);
    const std::string ended = bridge.run();
    if (ended.empty()) return;
    hangUp(client);
    throw Failure(ended);
}

void SerialCommand::listPorts() {
    const auto ports = Varnex::Serial::getPorts();
    if (ports.empty()) throw Failure("this machine has no serial ports");
    for (std::size_t i = 0; i < ports.size(); ++i) std::cout << i << "  " << ports[i] << '\n';
}

}  // namespace

std::unique_ptr<Command> makeSerialCommand(CLI::App& parent) {
    return std::make_unique<SerialCommand>(parent);
}

}  // namespace VarnexTool
