#include "Command.h"
#include "DiscoveryOptions.h"
#include "Endpoint.h"
#include "LibraryMessages.h"
#include "PrintOptions.h"
#include "Relay.h"

#include <map>

namespace VarnexTool {

namespace {

using Varnex::SendPolicy;

class HubCommand : public Command {
public:
    explicit HubCommand(CLI::App& parent);
    void run() override;

private:
    using Hub = LoggedHub<Varnex::MultiServer>;

    void addPolicyOptions();
    void open(Hub& hub, StatusLine& line) const;
    void tellDiscovery(const Hub& hub, StatusLine& line) const;
    [[nodiscard]] SendPolicy policy() const;

    std::string host_;
    unsigned short port_ = 4711;
    DiscoveryOptions discovery_;
    std::string announcedHost_;
    std::string policyName_ = "keep-newest";
    SendPolicy limits_;
    unsigned int maxLength_ = 1 << 20;
    Relay::Options relay_;
    double seconds_ = 0;
};

HubCommand::HubCommand(CLI::App& parent)
    : Command(parent, "hub", "Relay every event to all other connections, of types unknown here too") {
    app().add_option(
        "--host", host_,
        "The address to listen at, such as 127.0.0.1 or ::; without it all IPv4 addresses of this machine");
    app()
        .add_option("--port", port_, "The TCP port; 0: the system chooses one")
        ->transform(wholeNumberFrom(0, 65535))
        ->capture_default_str();
    discovery_.addTo(app(), "Let clients of the network find this hub by multicast");
    app()
        .add_option("--announce", announcedHost_,
                    "The address or name of this host that found clients shall connect to; without it the interface's")
        ->needs("--discover");
    addPolicyOptions();
    addMaxLengthOption(app(), maxLength_);
    app().add_flag("--json", relay_.json,
                   "Print the status as one JSON object a line, with the numbers of each client");
    app()
        .add_option("--status", relay_.statusSeconds, "Seconds between two status lines")
        ->check(numberFrom(0.001, 1e6))
        ->capture_default_str();
    addSecondsOption(app(), seconds_);
    app().add_flag("--quiet", relay_.quiet, "Print no status lines");
}

void HubCommand::addPolicyOptions() {
    app()
        .add_option("--policy", policyName_,
                    "What to do with a client that is too slow: let everyone wait for it, drop its events (keep-newest "
                    "keeps the newest state of each handle), or disconnect it")
        ->check(oneOf({"block", "drop-oldest", "drop-newest", "keep-newest", "disconnect"}))
        ->capture_default_str();
    app()
        .add_option("--queue-bytes", limits_.maxBytes, "Bytes that may wait for one client; 0: no limit")
        ->transform(wholeNumberFrom(0, 2147483647))
        ->capture_default_str();
    app()
        .add_option("--queue-messages", limits_.maxMessages, "Events that may wait for one client; 0: no limit")
        ->transform(wholeNumberFrom(0, 2147483647))
        ->capture_default_str();
}

SendPolicy HubCommand::policy() const {
    SendPolicy policy = limits_;
    if (policyName_ == "block") return policy;
    const std::map<std::string, SendPolicy::WhenFull> whenFull{{"drop-oldest", SendPolicy::DropOldest},
                                                               {"drop-newest", SendPolicy::DropNewest},
                                                               {"keep-newest", SendPolicy::KeepNewest},
                                                               {"disconnect", SendPolicy::Disconnect}};
    policy.mode = SendPolicy::Queue;
    policy.whenFull = whenFull.at(policyName_);
    return policy;
}

void HubCommand::run() {
    Varnex::Event::setMaxLength(maxLength_);
    StatusLine line;
    const PeerLog::Note tell = [&line](const std::string& note) { line.note(note); };
    const ForwardedMessages forwarded(tell);
    Hub hub(discovery_.maskBits(), tell);
    StopWatcher stop(std::chrono::duration<double>(seconds_), [&hub] { hub.breakWait(); });
    hub.setSendPolicy(policy());
    open(hub, line);
    Relay relay(hub, line, stop, relay_);
    relay.run();
    hub.close();
    if (relay.isOutputGone()) throw Failure("cannot write to the standard output");
}

void HubCommand::open(Hub& hub, StatusLine& line) const {
    discovery_.applyTo(hub);
    hub.setAnnouncedHost(announcedHost_);
    hub.setPortSharing(false);  // a second hub would take every other connection away unnoticed
    if (!hub.open(host_, port_, discovery_.isWanted))
        throw Failure(Endpoint{host_, port_}.text() + ": " + takeLibraryMessage() +
                      "; is the port taken or below 1024, or is the address not of this machine?");
    const Endpoint bound{host_.empty() ? "0.0.0.0" : host_, hub.getLocalPort()};
    line.note("listening on " + bound.text());
    if (discovery_.isWanted) tellDiscovery(hub, line);
}

void HubCommand::tellDiscovery(const Hub& hub, StatusLine& line) const {
    if (!hub.isAnnouncing()) return line.note("cannot be discovered: " + whyNotDiscovering());
    const Endpoint announced{hub.getInfo().getHostAddress(), hub.getLocalPort()};
    const bool isLoopback = announced.host.starts_with("127.") || announced.host == "::1";
    line.note("announced as " + announced.text() +
              (isLoopback ? ", which only this machine reaches; --interface or --announce chooses another" : ""));
}

}  // namespace

std::unique_ptr<Command> makeHubCommand(CLI::App& parent) {
    return std::make_unique<HubCommand>(parent);
}

}  // namespace VarnexTool
