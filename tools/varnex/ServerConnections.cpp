#include "ServerConnections.h"

#include "Endpoint.h"

#include <Varnex/transport/Exception.h>
#include <Varnex/transport/SocketAddress.h>

#include <algorithm>

namespace VarnexTool {

namespace {

constexpr std::chrono::milliseconds kLookAgain{10};
constexpr std::chrono::milliseconds kFirstPause{200};
constexpr std::chrono::milliseconds kLongestPause{5000};

void checkHost(const Endpoint& to) {
    using Varnex::SocketAddress;
    try {
        std::vector<SocketAddress> addresses;
        SocketAddress::resolve(to.host, to.port, SocketAddress::NoFlags, SocketAddress::Stream, SocketAddress::TCP,
                               addresses);
    } catch (const Varnex::Exception& error) {
        throw Failure(to.text() + ": " + error.what());
    }
}

}  // namespace

ServerConnections::ServerConnections(const DiscoveryOptions& discovery)
    : LoggedHub(discovery.maskBits(), &EventLog::note, "; connecting again") {
    discovery.applyTo(*this);
    setPreferSourceAddress(true);
    setReconnect(static_cast<int>(kFirstPause.count()), static_cast<int>(kLongestPause.count()));
}

void ServerConnections::discover() {
    open();
    if (!isDiscovering()) throw Failure("cannot discover servers: " + whyNotDiscovering());
}

void ServerConnections::awaitFirst(std::chrono::duration<double> time, const StopWatcher& stop) const {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(time);
    while (getCount() == 0) {
        if (!stop.sleepUntil(Clock::now() + kLookAgain)) return;
        if (Clock::now() >= end) throw Failure("no server answered; varnex doctor looks for the cause");
    }
}

void ServerConnections::connect(const Endpoint& to, const StopWatcher& stop) {
    checkHost(to);
    auto pause = kFirstPause;
    for (bool isFirst = true; !stop.isStopped() && !connectToServer(to.host, to.port); isFirst = false) {
        if (isFirst) EventLog::note(to.text() + " does not answer; trying again");
        if (!stop.sleepUntil(std::chrono::steady_clock::now() + pause)) return;
        pause = std::min(2 * pause, kLongestPause);
    }
}

}  // namespace VarnexTool
