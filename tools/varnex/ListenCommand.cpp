#include "Command.h"
#include "Endpoint.h"
#include "Failure.h"
#include "Listener.h"
#include "PrintOptions.h"

#include <Varnex/transport/IOException.h>
#include <Varnex/transport/Server.h>

namespace VarnexTool {

namespace {

class ListenCommand : public Command {
public:
    explicit ListenCommand(CLI::App& parent);
    void run() override;

private:
    void open(Varnex::Server& server) const;

    std::string where_;
    PrintOptions print_;
};

ListenCommand::ListenCommand(CLI::App& parent)
    : Command(parent, "listen", "Accept connections and print each event on one line") {
    app()
        .add_option(
            "[HOST:]PORT", where_,
            "Where to listen, such as 4711, 127.0.0.1:4711 or [::1]:4711; without a host it listens at all IPv4 "
            "addresses of this machine; port 0: the system chooses one")
        ->required();
    print_.addTo(app());
}

void ListenCommand::run() {
    const EventLog::Options options = print_.use();
    Varnex::Server server;
    open(server);
    StopWatcher stop(print_.timeLimit(), [&server] { wake(server); });
    EventLog log(options, stop);
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
