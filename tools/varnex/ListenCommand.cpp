#include "Command.h"
#include "Endpoint.h"
#include "EventLog.h"
#include "Failure.h"
#include "Listener.h"
#include "Quote.h"

#include <Varnex/events/Event.h>
#include <Varnex/transport/IOException.h>
#include <Varnex/transport/Server.h>

#include <unistd.h>

namespace VarnexTool {

namespace {

class ListenCommand : public Command {
public:
    explicit ListenCommand(CLI::App& parent);
    void run() override;

private:
    void open(Varnex::Server& server) const;

    std::string where_;
    std::string colour_ = "auto";
    EventLog::Options options_;
    double seconds_ = 0;
    unsigned int maxLength_ = 1 << 20;  // printing takes many times the memory of an event
};

std::string colourFault(const std::string& text) {
    if (text == "auto" || text == "always" || text == "never") return {};
    return inQuotes(text) + " is not auto, always or never";
}

ListenCommand::ListenCommand(CLI::App& parent)
    : Command(parent, "listen", "Accept connections and print each event on one line") {
    app()
        .add_option(
            "[HOST:]PORT", where_,
            "Where to listen, such as 4711, 127.0.0.1:4711 or [::1]:4711; without a host it listens at all IPv4 "
            "addresses of this machine; port 0: the system chooses one")
        ->required();
    app().add_flag("--json", options_.format.json, "Print one JSON object a line");
    app()
        .add_option("--count", options_.count, "End after this many events")
        ->transform(wholeNumberFrom(1, 1'000'000'000'000'000'000));
    app()
        .add_option("--max-length", maxLength_, "Drop a connection that sends a longer event, bytes; 0: no limit")
        ->transform(wholeNumberFrom(0, 2147483647))
        ->capture_default_str();
    app().add_option("--seconds", seconds_, "End after this time")->check(numberFrom(0.001, 1e9));
    app()
        .add_option("--color", colour_, "Colour the lines")
        ->check(CLI::Validator(&colourFault, "auto|always|never"))
        ->capture_default_str();
    app().add_flag("--quiet", options_.quiet, "Print no event lines");
    app().add_flag("--summary", options_.summary,
                   "Print at the end the number and rate of events, and their latency where the value of an event is "
                   "the time of sending in nanoseconds since 1970");
}

void ListenCommand::run() {
    Varnex::Event::setMaxLength(maxLength_);
    Varnex::Server server;
    open(server);
    options_.format.colour = colour_ == "always" || (colour_ == "auto" && ::isatty(STDOUT_FILENO) == 1);
    StopWatcher stop(std::chrono::duration<double>(seconds_), [&server] { wake(server); });
    EventLog log(options_, stop);
    EventLog::note("listening on " + Endpoint::of(server.getLocalAddress()).text());
    Listener(server, log, stop).run();
    log.finish();
}

void ListenCommand::open(Varnex::Server& server) const {
    const Endpoint where = Endpoint::toListen(where_);
    server.setPortSharing(false);  // a second listener would take every other connection away unnoticed
    try {
        server.open(where.host, where.port);
    } catch (const Varnex::IOException& error) {
        throw Failure(where_ + ": " + error.what() +
                      "; is the port taken or below 1024, or is the address not of this machine?");
    } catch (const Varnex::Exception& error) {
        throw Failure(where_ + ": " + error.what());
    }
}

}  // namespace

std::unique_ptr<Command> makeListenCommand(CLI::App& parent) {
    return std::make_unique<ListenCommand>(parent);
}

}  // namespace VarnexTool
