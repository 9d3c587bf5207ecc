#pragma once

#include <Varnex/events/ServerInfoEvent.h>
#include <Varnex/hub/MultiCommunicator.h>
#include <Varnex/transport/Multicast.h>
#include <Varnex/transport/WakeUpPipe.h>

#include <Zendro/ObjectThread.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Varnex {

class Client;
class Dialler;
class SocketAddress;

/// A hub that dials servers, given by host and port or found by multicast, and keeps one connection to each.
///
/// It looks for `MultiServer`s that share a bit of the mask and have the ID, and connects to all. Discovery is no
/// protection: anyone on the network can announce any host and port, see `setAcceptAnnouncement`. Settings are made
/// while it is closed; whoever opens also closes, and a subclass that overrides an operation closes in its own
/// destructor.
class VARNEX_API MultiClient : public MultiCommunicator {
public:
    /// Milliseconds that each connection attempt of the hub's own may take, unless set otherwise.
    static constexpr int kDefaultConnectTimeout = 5000;

    /// Connections held at the same time.
    static constexpr int kDefaultMaxConnections = 10000;

    /// Servers that are dialled, by announcement or again, at the same time or later.
    static constexpr int kDefaultMaxServers = 4096;

    /// The low 32 bits of the mask count.
    explicit MultiClient(long mask);
    ~MultiClient() override;

    /// Ends discovery, breaks connection attempts off and deletes all connections.
    bool close() override;

    /// Also forgets which server the connection belongs to.
    void removeCommunicator(Communicator* connection) override;

    /// Begins discovery. True also when there is none, after ERROR lines; see `isDiscovering`.
    bool open() override;

    /// Connects to the first address of the host that answers; true at once when there is a connection to one of them.
    /// Any thread, also without `open`, though not an override of `addCommunicator`. False when the host cannot be
    /// resolved, nothing answers, or the hub is closed meanwhile.
    virtual bool connectToServer(const std::string& host, unsigned short port);

    /// Closes and deletes the connection to the host's first IPv4 address, which is lost as `Dropped`. False when there
    /// is none; so one over IPv6 is dropped by `dropCommunicator` only. For the consumer, see the base class.
    virtual bool disconnectFromServer(const std::string& host, unsigned short port);

    /// Seconds since 1970-01-01 00:00 UTC.
    [[nodiscard]] static double getSystemTime();

    [[nodiscard]] bool isDiscovering() const { return discoveryThread_ != nullptr; }

    /// For how many seconds the query is repeated, each time that a second passes without an answer; 0, the default: it
    /// is repeated once. Servers that start later announce themselves.
    void setQueryDuration(double seconds) { queryDuration_ = seconds; }
    [[nodiscard]] long getMask() const { return mask_; }
    [[nodiscard]] int getId() const { return id_; }
    void setId(int id) { id_ = id; }

    /// Whether connections send small packets at once; false at first.
    void setTcpNoDelay(bool on) { tcpNoDelay_ = on; }

    /// For every connection attempt, milliseconds; 0: the system's limit, often two minutes. Until it is called only
    /// attempts that the hub makes by itself are limited.
    void setConnectTimeout(int ms) { connectTimeoutMs_ = ms; }

    /// More are refused, with an ERROR line; 0: no limit.
    void setMaxConnections(int connections) { maxConnections_ = connections; }

    /// Announced and lost servers beyond this are not dialled; 0 or less: none is.
    void setMaxServers(int servers);

    /// How many routers a query may pass, see `Multicast::setTTL`.
    void setDiscoveryTTL(int hops) { multicast_.setTTL(hops); }

    /// Where to discover, by address or name: one interface or several instead of the one that carries the host's own
    /// address. False when one does not exist; nothing changes then.
    bool setDiscoveryInterfaces(const std::vector<std::string>& addressesOrNames);
    bool setDiscoveryInterface(const std::string& addressOrName) { return setDiscoveryInterfaces({addressOrName}); }

    /// Connects to where an announcement came from when it names a loopback address but came from another host, as
    /// misconfigured servers do. Off at first.
    void setPreferSourceAddress(bool on) { preferSource_ = on; }

    /// Is asked about each matching announcement, on the discovery thread; false: do not connect.
    using AcceptAnnouncement = std::function<bool(const ServerInfoEvent&)>;
    void setAcceptAnnouncement(AcceptAnnouncement accept) { acceptAnnouncement_ = std::move(accept); }

    /// Dials each lost server again after pauses that double from `minMs` to `maxMs` milliseconds, and at once when it
    /// announces itself, until it is connected or `disconnectFromServer` gives it up. Sets `setDeleteLost`.
    void setReconnect(int minMs, int maxMs);

private:
    class Dial;

    int connectThread();
    [[nodiscard]] bool receiveAnnouncement();
    void follow(const ServerInfoEvent& info);

    [[nodiscard]] std::unique_ptr<Client> makeClient();
    [[nodiscard]] bool keep(std::unique_ptr<Client> client, const std::string& key);
    void forget(Communicator* connection, bool redial);
    void stopDialling();
    [[nodiscard]] bool beginDial(const std::string& key, bool& connected);
    void endDial();
    void giveUp(const std::string& host, unsigned short port);
    bool dropServer(const std::string& key);

    double queryDuration_ = 0.0;
    long mask_;
    int id_ = 0;
    Multicast multicast_;
    std::unique_ptr<Zendro::ObjectThread<MultiClient>> discoveryThread_;
    // Taken before the hub's locks, never held while connecting.
    mutable Zendro::Mutex connectionsMutex_;
    std::map<std::string, Communicator*> connections_ VARNEX_GUARDED_BY(connectionsMutex_);
    bool tcpNoDelay_ = false;

    bool closing_ VARNEX_GUARDED_BY(connectionsMutex_) = false;
    int dials_ VARNEX_GUARDED_BY(connectionsMutex_) = 0;  // under way
    std::condition_variable_any dialEnded_;
    int connectTimeoutMs_ = -1;  // not set
    int maxConnections_ = kDefaultMaxConnections;
    bool preferSource_ = false;
    AcceptAnnouncement acceptAnnouncement_;
    WakeUpPipe cancel_;  // readable while connection attempts are broken off
    std::unique_ptr<Dialler> dialler_;
};

}  // namespace Varnex
