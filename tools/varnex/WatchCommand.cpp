#include "Command.h"
#include "Endpoint.h"
#include "LibraryMessages.h"
#include "PrintOptions.h"
#include "ServerConnections.h"

#include <Varnex/hub/HubReader.h>

namespace VarnexTool {

namespace {

class WatchCommand : public Command {
public:
    explicit WatchCommand(CLI::App& parent);
    void run() override;

private:
    static void print(ServerConnections& servers, EventLog& log, const StopWatcher& stop);

    std::string where_;
    DiscoveryOptions discovery_;
    PrintOptions print_;
};

WatchCommand::WatchCommand(CLI::App& parent)
    : Command(parent, "watch", "Connect to a hub, again whenever that is lost, and print each event on one line") {
    app().add_option("HOST:PORT", where_, "The hub, such as 127.0.0.1:4711 or [::1]:4711");
    discovery_.addTo(app(), "Connect to all hubs that the network finds, in place of HOST:PORT");
    print_.addTo(app());
}

void WatchCommand::run() {
    discovery_.checkWith(where_);
    const Endpoint to = discovery_.isWanted ? Endpoint() : Endpoint::toConnect(where_);
    const EventLog::Options options = print_.use();
    const ForwardedMessages forwarded(&EventLog::note);
    ServerConnections servers(discovery_);
    StopWatcher stop(print_.timeLimit(), [&servers] { servers.breakWait(); });
    EventLog log(options, stop);
    discovery_.isWanted ? servers.discover() : servers.connect(to, stop);
    print(servers, log, stop);
    servers.close();
    log.finish();
}

void WatchCommand::print(ServerConnections& servers, EventLog& log, const StopWatcher& stop) {
    using What = Varnex::HubReader::What;
    Varnex::HubReader reader(servers);
    std::string lines;
    while (!stop.isStopped()) {
        const auto news = reader.read();
        const bool goesOn =
            news.what != What::Event || log.take(*news.event, servers.peers.nameOf(news.connection), lines);
        if (!reader.hasMore()) log.write(lines);
        if (!goesOn) break;
        if (news.what == What::Broken) servers.peers.brokeOff(news.connection, news.reason);
        if (news.what == What::Unknown)
            EventLog::note(servers.peers.nameOf(news.connection) + " sent an event of unknown type " +
                           std::to_string(news.typeID) + ", " + std::to_string(news.length) + " bytes skipped");
    }
    log.write(lines);
}

}  // namespace

std::unique_ptr<Command> makeWatchCommand(CLI::App& parent) {
    return std::make_unique<WatchCommand>(parent);
}

}  // namespace VarnexTool
