#include "Checks.h"
#include "Command.h"
#include "Failure.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <utility>

namespace VarnexTool {

namespace {

using Varnex::NetworkInterface;

void printLine(const Finding& finding) {
    std::cout << std::left << std::setw(8) << finding.levelName() << finding.subject << ' ' << finding.what
              << (finding.fix.empty() ? "" : "; fix: ") << finding.fix << std::endl;
}

void printJson(const Finding& finding) {
    const nlohmann::ordered_json object{
        {"level", finding.levelName()}, {"subject", finding.subject}, {"what", finding.what}, {"fix", finding.fix}};
    std::cout << object.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace) << std::endl;
}

class DoctorCommand : public Command {
public:
    explicit DoctorCommand(CLI::App& parent)
        : Command(parent, "doctor", "Check what discovery and a hub need of this machine, and tell the fixes") {
        app()
            .add_option("--interface", interfaces_, "Check only this network interface, by name or address; repeatable")
            ->allow_extra_args(false);
        app()
            .add_option("--port", port_, "The TCP port of the hub")
            ->transform(wholeNumberFrom(1, 65535))
            ->capture_default_str();
        app().add_flag("--json", json_, "Print one JSON object a line");
    }

    void run() override {
        const auto all = chosenInterfaces();
        if (all.empty()) tell({Finding::Problem, "network", "has no IPv4 interface", "ip link set lo up"});
        for (const NetworkInterface& each : all) tell(checkInterface(each, mustWork(each)));
        tell(checkHostName(interfaces_.empty()));
        tell(checkPort(port_));
        tell(checkDescriptors());
        if (problems_ > 0) throw Failure("problems found: " + std::to_string(problems_));
    }

private:
    void tell(const Finding& finding) {
        json_ ? printJson(finding) : printLine(finding);
        if (finding.level == Finding::Problem) ++problems_;
    }

    /// The loopback interface need not where another one does, and one that is down is not in use.
    [[nodiscard]] bool mustWork(const NetworkInterface& interface) const {
        return !interfaces_.empty() || (interface.isUp && !interface.address.getHostAddress().starts_with("127."));
    }

    [[nodiscard]] std::vector<NetworkInterface> chosenInterfaces() const {
        std::vector<NetworkInterface> chosen;
        for (const NetworkInterface& each : NetworkInterface::getAll())
            if (interfaces_.empty() || isNamed(each)) chosen.push_back(each);
        if (chosen.empty() && !interfaces_.empty())
            throw UsageError("--interface: there is no such IPv4 network interface");
        return chosen;
    }

    [[nodiscard]] bool isNamed(const NetworkInterface& interface) const {
        const auto names = {interface.name, interface.address.getHostAddress()};
        return std::find_first_of(names.begin(), names.end(), interfaces_.begin(), interfaces_.end()) != names.end();
    }

    std::vector<std::string> interfaces_;
    unsigned short port_ = 4711;
    bool json_ = false;
    int problems_ = 0;
};

}  // namespace

std::unique_ptr<Command> makeDoctorCommand(CLI::App& parent) {
    return std::make_unique<DoctorCommand>(parent);
}

}  // namespace VarnexTool
