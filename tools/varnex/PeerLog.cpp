#include "PeerLog.h"

#include "Endpoint.h"

#include <Varnex/transport/NetCommunicator.h>

namespace VarnexTool {

namespace {

constexpr int kKeepAliveSeconds = 60;

std::string whyDropped(Varnex::LostReason reason) {
    switch (reason) {
        case Varnex::LostReason::QueueFull:
            return "its queue is full";
        case Varnex::LostReason::SendFailed:
            return "it takes no more events";
        default:
            return "cannot receive from it";
    }
}

}  // namespace

PeerLog::PeerLog(Varnex::MultiCommunicator& hub, Note note, std::string afterLoss)
    : hub_(hub), note_(std::move(note)), afterLoss_(std::move(afterLoss)) {
    hub_.setConnectedCallback([this](const Varnex::Communicator* connection) {
        if (const std::string name = nameOf(connection); !name.empty()) note_(name + " connected");
    });
    hub_.setLostCallback(
        [this](Varnex::Communicator* connection, Varnex::LostReason reason) { lost(connection, reason); });
}

void PeerLog::add(Varnex::Communicator& connection) {
    std::string name = "?";
    if (auto* const net = dynamic_cast<Varnex::NetCommunicator*>(&connection)) {
        net->setKeepAlive(kKeepAliveSeconds);  // a peer that vanished must not stay for ever
        name = Endpoint::of(net->getRemoteAddress()).text();
    }
    const Zendro::MutexLock lock(mutex_);
    peers_[&connection] = {name, 0, ""};
}

void PeerLog::lost(Varnex::Communicator* connection, Varnex::LostReason reason) {
    // A reader has dropped it already, and knows why; or it cannot be waited for, and nobody reads it any more.
    const bool isReaders = reason == Varnex::LostReason::ReceiveFailed && !hub_.dropCommunicator(connection, reason);
    Peer peer;
    {
        const Zendro::MutexLock lock(mutex_);
        peer = take(peers_, connection);
        if (peer.name.empty()) return;
        if (isReaders && peer.fault.empty()) {
            broken_[connection] = std::move(peer);
            return;
        }
    }
    if (reason == Varnex::LostReason::PeerClosed) return note_(peer.name + " closed" + afterLoss_);
    tellDropped(peer.name, isReaders ? peer.fault : whyDropped(reason));
}

void PeerLog::brokeOff(const Varnex::Communicator* connection, const std::string& reason) {
    Peer peer;
    {
        const Zendro::MutexLock lock(mutex_);
        peer = take(broken_, connection);
        const auto found = peers_.find(connection);
        if (peer.name.empty() && found != peers_.end()) found->second.fault = reason;  // the hub tells its loss soon
    }
    if (!peer.name.empty()) tellDropped(peer.name, reason);
}

void PeerLog::tellDropped(const std::string& name, const std::string& why) {
    {
        const Zendro::MutexLock lock(mutex_);
        ++dropped_;
    }
    note_(name + " dropped: " + why + afterLoss_);
}

/// Forgets it, too; without a name when it is not there.
PeerLog::Peer PeerLog::take(Peers& from, const Varnex::Communicator* connection) {
    auto taken = from.extract(connection);
    return taken.empty() ? Peer() : std::move(taken.mapped());
}

void PeerLog::countEvent(const Varnex::Communicator* connection) {
    const Zendro::MutexLock lock(mutex_);
    ++events_;
    if (const auto found = peers_.find(connection); found != peers_.end()) ++found->second.events;
}

std::string PeerLog::nameOf(const Varnex::Communicator* connection) const {
    const Zendro::MutexLock lock(mutex_);
    const auto found = peers_.find(connection);
    return found == peers_.end() ? "" : found->second.name;
}

unsigned long long PeerLog::eventsOf(const Varnex::Communicator* connection) const {
    const Zendro::MutexLock lock(mutex_);
    const auto found = peers_.find(connection);
    return found == peers_.end() ? 0 : found->second.events;
}

unsigned long long PeerLog::events() const {
    const Zendro::MutexLock lock(mutex_);
    return events_;
}

unsigned long long PeerLog::dropped() const {
    const Zendro::MutexLock lock(mutex_);
    return dropped_;
}

}  // namespace VarnexTool
