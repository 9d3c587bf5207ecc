#pragma once

#include <Varnex/hub/MultiCommunicator.h>

#include <Zendro/Mutex.h>

#include <functional>
#include <map>
#include <string>
#include <utility>

namespace VarnexTool {

/// Who is connected to a hub: names them, counts their events, and tells in a line when one comes or goes.
///
/// The hub's owner calls `add` before a connection enters the hub; the loss of a connection it hears from the hub
/// itself, whose callbacks it takes. Any thread, but `brokeOff` is for the hub's consumer. Outlives the open hub.
class PeerLog {
public:
    using Note = std::function<void(const std::string&)>;

    /// `afterLoss` ends the lines of lost connections.
    PeerLog(Varnex::MultiCommunicator& hub, Note note, std::string afterLoss = "");
    PeerLog(const PeerLog&) = delete;
    PeerLog& operator=(const PeerLog&) = delete;

    void add(Varnex::Communicator& connection);

    /// The connection that sent this reason's bytes was dropped by a `HubReader`.
    void brokeOff(const Varnex::Communicator* connection, const std::string& reason);

    void countEvent(const Varnex::Communicator* connection);

    /// Empty and 0 when it is not connected any more.
    [[nodiscard]] std::string nameOf(const Varnex::Communicator* connection) const;
    [[nodiscard]] unsigned long long eventsOf(const Varnex::Communicator* connection) const;

    /// Of all connections, ended ones too.
    [[nodiscard]] unsigned long long events() const;
    /// How many ended in another way than by their peer's closing.
    [[nodiscard]] unsigned long long dropped() const;

private:
    struct Peer {
        std::string name;
        unsigned long long events = 0;
        std::string fault;  // for which a reader has dropped it
    };
    using Peers = std::map<const Varnex::Communicator*, Peer>;

    void lost(Varnex::Communicator* connection, Varnex::LostReason reason);
    void tellDropped(const std::string& name, const std::string& why);
    [[nodiscard]] static Peer take(Peers& from, const Varnex::Communicator* connection);

    Varnex::MultiCommunicator& hub_;
    const Note note_;
    const std::string afterLoss_;
    mutable Zendro::Mutex mutex_;
    Peers peers_ VARNEX_GUARDED_BY(mutex_);
    // Lost already, for a reason that the consumer will tell. Others may have their addresses meanwhile.
    Peers broken_ VARNEX_GUARDED_BY(mutex_);
    unsigned long long events_ VARNEX_GUARDED_BY(mutex_) = 0;
    unsigned long long dropped_ VARNEX_GUARDED_BY(mutex_) = 0;
};

/// A `MultiServer` or `MultiClient` with such a log.
template <class Hub>
class LoggedHub : public Hub {
public:
    LoggedHub(long mask, PeerLog::Note note, std::string afterLoss = "")
        : Hub(mask), peers(*this, std::move(note), std::move(afterLoss)) {
        this->setTcpNoDelay(true);
    }
    ~LoggedHub() override { Hub::close(); }

    bool addCommunicator(Varnex::Communicator* connection) override {
        peers.add(*connection);
        return Hub::addCommunicator(connection);
    }

    PeerLog peers;
};

}  // namespace VarnexTool
