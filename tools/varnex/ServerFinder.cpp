#include "ServerFinder.h"

#include <algorithm>

namespace VarnexTool {

ServerFinder::ServerFinder(const DiscoveryOptions& discovery) : client_(discovery.maskBits()) {
    discovery.applyTo(client_);
    over_.open();
    client_.setAcceptAnnouncement([this](const Varnex::ServerInfoEvent& info) {
        take(info);
        return false;
    });
}

void ServerFinder::take(const Varnex::ServerInfoEvent& info) {
    const Zendro::MutexLock lock(mutex_);
    if (found_.size() >= kMaxServers) return;
    found_[{info.getHostAddress(), info.getPort()}] = {info.getHostAddress(), info.getPort(), info.getHostName(),
                                                       static_cast<std::uint32_t>(info.getMask()),
                                                       static_cast<unsigned short>(info.getId())};
    if (firstIsEnough_) over_.breakWait();
}

std::vector<FoundServer> ServerFinder::all(std::chrono::duration<double> time) {
    search(time);
    const Zendro::MutexLock lock(mutex_);
    std::vector<FoundServer> all;
    for (const auto& [where, server] : found_) all.push_back(server);
    return all;
}

Endpoint ServerFinder::first(std::chrono::duration<double> time) {
    firstIsEnough_ = true;
    search(time);
    const Zendro::MutexLock lock(mutex_);
    if (found_.empty() && !stopped_) throw Failure("no server answered; varnex doctor looks for the cause");
    return found_.empty() ? Endpoint() : Endpoint{found_.begin()->second.host, found_.begin()->second.port};
}

void ServerFinder::search(std::chrono::duration<double> time) {
    constexpr double kLongest = 1e6;  // its milliseconds are an int
    const double seconds = std::min(time.count(), kLongest);
    client_.setQueryDuration(seconds);
    client_.open();
    if (!client_.isDiscovering()) throw Failure("cannot discover servers: " + whyNotDiscovering());
    static_cast<void>(over_.wait(static_cast<int>(seconds * 1000)));
    client_.close();
}

void ServerFinder::stop() {
    stopped_ = true;
    over_.breakWait();
}

}  // namespace VarnexTool
