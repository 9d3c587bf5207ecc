#include "Command.h"
#include "Dial.h"
#include "EventSink.h"
#include "Failure.h"
#include "LibraryMessages.h"
#include "Pacer.h"
#include "ServerConnections.h"

#include <Varnex/events/EventBatch.h>
#include <Varnex/events/TranslationRotationEvent.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

namespace VarnexTool {

namespace {

constexpr double kRadius = 1;    // metres
constexpr double kHeight = 1.5;  // metres
constexpr double kSecondsPerTurn = 5;
constexpr int kFlushMs = 1000;

unsigned long long nanosecondsSince1970() {
    using namespace std::chrono;
    return static_cast<unsigned long long>(duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count());
}

/// Bodies that follow each other on one horizontal circle, each looking where it goes.
class Tracker {
public:
    Tracker(const std::string& name, int bodies) {
        for (int i = 1; i <= bodies; ++i) bodies_.emplace_back((name + std::to_string(i)).c_str());
    }

    /// Puts where they are after `seconds` into the batch.
    void report(double seconds, Varnex::EventBatch& batch) {
        for (std::size_t i = 0; i < bodies_.size(); ++i) {
            const double offset = static_cast<double>(i) / static_cast<double>(bodies_.size());
            move(bodies_[i], 2 * std::numbers::pi * (seconds / kSecondsPerTurn + offset));
            if (!batch.add(bodies_[i])) throw Failure("cannot serialise that many bodies");
        }
    }

private:
    /// The quaternion (x, y, z, w) turns by the heading about the vertical axis z.
    static void move(Varnex::TranslationRotationEvent& body, double angle) {
        const double heading = angle + std::numbers::pi / 2;
        body.setTranslation(static_cast<float>(kRadius * std::cos(angle)),
                            static_cast<float>(kRadius * std::sin(angle)), static_cast<float>(kHeight));
        body.setRotation(0, 0, static_cast<float>(std::sin(heading / 2)), static_cast<float>(std::cos(heading / 2)));
        body.setValue(nanosecondsSince1970());
    }

    std::vector<Varnex::TranslationRotationEvent> bodies_;
};

class SimulateCommand : public Command {
public:
    explicit SimulateCommand(CLI::App& parent);
    void run() override;

private:
    /// Sends a batch; false when nobody takes it any more.
    using Send = std::function<bool(Varnex::EventBatch&)>;

    void sendToOne(const Endpoint& to) const;
    void sendToAll() const;
    [[nodiscard]] bool sendAll(const StopWatcher& stop, const Send& send) const;

    std::string where_;
    DiscoveryOptions discovery_;
    double connectSeconds_ = kDefaultConnectSeconds;
    std::string name_ = "body";
    double rate_ = 60;
    int bodies_ = 1;
    double seconds_ = 0;
};

SimulateCommand::SimulateCommand(CLI::App& parent)
    : Command(
          parent, "simulate",
          "Send tracked bodies that move on a circle, as TranslationRotationEvents with the handles body1, body2 ...; "
          "their value is the time of sending in nanoseconds since 1970") {
    app().add_option("HOST:PORT", where_, "The listener, such as 127.0.0.1:4711 or [::1]:4711");
    discovery_.addTo(app(), "Send to all servers that the network finds, in place of HOST:PORT");
    app()
        .add_option("--connect-timeout", connectSeconds_,
                    "Seconds to wait for the connection, and for a server to be found")
        ->check(numberFrom(0.001, 1e6))
        ->capture_default_str();
    app().add_option("--name", name_, "How their handles begin")->capture_default_str();
    app()
        .add_option("--rate", rate_, "Positions a second of each body")
        ->check(numberFrom(0.001, 1e6))
        ->capture_default_str();
    app().add_option("--bodies", bodies_, "How many")->transform(wholeNumberFrom(1, 100000))->capture_default_str();
    app()
        .add_option("--seconds", seconds_, "End after this time; without it when stopped")
        ->check(numberFrom(0.001, 1e9));
}

void SimulateCommand::run() {
    discovery_.checkWith(where_);
    if (discovery_.isWanted) return sendToAll();
    sendToOne(Endpoint::toConnect(where_));
}

void SimulateCommand::sendToOne(const Endpoint& to) const {
    StopWatcher stop{std::chrono::duration<double>(seconds_)};
    Varnex::Client client;
    dial(client, to, std::chrono::duration<double>(connectSeconds_));
    Discarder unwanted(client);
    const bool sent = sendAll(stop, [&](Varnex::EventBatch& batch) {
        unwanted.turn();
        return batch.send(&client);
    });
    if (sent) return hangUp(client);
    if (!stop.isStopped()) throw Failure(withLibraryMessage(to.text() + " stopped taking events"));
}

void SimulateCommand::sendToAll() const {
    StopWatcher stop{std::chrono::duration<double>(seconds_)};
    const ForwardedMessages forwarded(&EventLog::note);
    ServerConnections servers(discovery_);
    Varnex::SendPolicy policy;
    policy.mode = Varnex::SendPolicy::Queue;  // one that is slow must not hold up the others
    servers.setSendPolicy(policy);
    servers.discover();
    servers.awaitFirst(std::chrono::duration<double>(connectSeconds_), stop);
    const EventSink unwanted(servers);
    static_cast<void>(sendAll(stop, [&](Varnex::EventBatch& batch) {
        int size = batch.getSize();
        servers.send(batch.getData(), size);
        batch.clear();
        return true;
    }));
    static_cast<void>(servers.flush(kFlushMs));
}

/// Until stopped. False when nobody takes the events any more.
bool SimulateCommand::sendAll(const StopWatcher& stop, const Send& send) const {
    using namespace std::chrono;
    Tracker tracker(name_, bodies_);
    Varnex::EventBatch batch;
    Pacer pacer(rate_, stop);
    const auto start = steady_clock::now();
    while (pacer.wait()) {
        tracker.report(duration<double>(steady_clock::now() - start).count(), batch);
        if (!send(batch)) return false;
    }
    return true;
}

}  // namespace

std::unique_ptr<Command> makeSimulateCommand(CLI::App& parent) {
    return std::make_unique<SimulateCommand>(parent);
}

}  // namespace VarnexTool
