#include "Command.h"
#include "Endpoint.h"
#include "Quote.h"
#include "ServerFinder.h"
#include "StopWatcher.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <iostream>

namespace VarnexTool {

namespace {

std::string hexadecimal(std::uint32_t mask) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%x", mask);
    return text;
}

std::string jsonLine(const FoundServer& server) {
    const nlohmann::ordered_json object{{"address", server.host},
                                        {"port", server.port},
                                        {"name", server.name},
                                        {"mask", server.mask},
                                        {"id", server.id}};
    constexpr bool kAsciiOnly = true;
    return object.dump(-1, ' ', kAsciiOnly, nlohmann::ordered_json::error_handler_t::replace);
}

std::string line(const FoundServer& server) {
    return escaped(Endpoint{server.host, server.port}.text()) + " name=" + inQuotes(server.name) +
           " mask=" + hexadecimal(server.mask) + " id=" + std::to_string(server.id);
}

class ServersCommand : public Command {
public:
    explicit ServersCommand(CLI::App& parent) : Command(parent, "servers", "List the servers that the network finds") {
        discovery_.addTo(app(), "");
        app()
            .add_option("--seconds", seconds_, "How long to wait for answers")
            ->check(numberFrom(0.001, 1e6))
            ->capture_default_str();
        app().add_flag("--json", json_, "Print one JSON object a line");
    }

    void run() override {
        ServerFinder finder(discovery_);
        const StopWatcher stop(std::chrono::seconds(0), [&finder] { finder.stop(); });
        const auto all = finder.all(std::chrono::duration<double>(seconds_));
        for (const FoundServer& server : all) std::cout << (json_ ? jsonLine(server) : line(server)) << '\n';
        if (all.empty()) throw Failure("no server answered; varnex doctor looks for the cause");
    }

private:
    DiscoveryOptions discovery_;
    double seconds_ = 2;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<Command> makeServersCommand(CLI::App& parent) {
    return std::make_unique<ServersCommand>(parent);
}

}  // namespace VarnexTool
