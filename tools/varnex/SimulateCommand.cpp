#include "Command.h"
#include "Dial.h"
#include "Failure.h"
#include "LibraryMessages.h"
#include "Pacer.h"

#include <Varnex/events/EventBatch.h>
#include <Varnex/events/TranslationRotationEvent.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace VarnexTool {

namespace {

constexpr double kRadius = 1;    // metres
constexpr double kHeight = 1.5;  // metres
constexpr double kSecondsPerTurn = 5;

unsigned long long nanosecondsSince1970() {
    using namespace std::chrono;
    return static_cast<unsigned long long>(duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count());
}

/// Bodies that follow each other on one horizontal circle, each looking where it goes.
class Tracker {
public:
    explicit Tracker(int bodies) {
        for (int i = 1; i <= bodies; ++i) bodies_.emplace_back(("body" + std::to_string(i)).c_str());
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
    std::string where_;
    double rate_ = 60;
    int bodies_ = 1;
    double seconds_ = 0;
};

SimulateCommand::SimulateCommand(CLI::App& parent)
    : Command(
          parent, "simulate",
          "Send tracked bodies that move on a circle, as TranslationRotationEvents with the handles body1, body2 ...; "
          "their value is the time of sending in nanoseconds since 1970") {
    app().add_option("HOST:PORT", where_, "The listener, such as 127.0.0.1:4711 or [::1]:4711")->required();
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
    using namespace std::chrono;
    const Endpoint to = Endpoint::toConnect(where_);
    StopWatcher stop{duration<double>(seconds_)};
    Varnex::Client client;
    dial(client, to, duration<double>(kDefaultConnectSeconds));
    Tracker tracker(bodies_);
    Varnex::EventBatch batch;
    Pacer pacer(rate_, stop);
    const auto start = steady_clock::now();
    while (pacer.wait()) {
        tracker.report(duration<double>(steady_clock::now() - start).count(), batch);
        if (batch.send(&client)) continue;
        if (stop.isStopped()) return;
        throw Failure(withLibraryMessage(where_ + " stopped taking events"));
    }
    hangUp(client);
}

}  // namespace

std::unique_ptr<Command> makeSimulateCommand(CLI::App& parent) {
    return std::make_unique<SimulateCommand>(parent);
}

}  // namespace VarnexTool
