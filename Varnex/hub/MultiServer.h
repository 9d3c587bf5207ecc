#pragma once

#include <Varnex/events/ServerInfoEvent.h>
#include <Varnex/hub/MultiCommunicator.h>
#include <Varnex/transport/AcceptPause.h>
#include <Varnex/transport/Multicast.h>
#include <Varnex/transport/Server.h>

#include <Zendro/ObjectThread.h>

#include <memory>
#include <string>
#include <vector>

namespace Varnex {

class Client;

/// A hub that listens on a TCP port, takes in every connection, and lets itself be found by multicast.
///
/// It announces itself with a `ServerInfoEvent` when it opens, answers `ServerInfoQueryEvent`s that share a bit of the
/// mask and have the ID, and says farewell when it closes. Discovery is no protection: anyone on the network can ask,
/// and connect. Settings are made while it is closed; whoever opens also closes, and a subclass that overrides an
/// operation closes in its own destructor.
class VARNEX_API MultiServer : public MultiCommunicator {
public:
    /// Connections held at the same time.
    static constexpr int kDefaultMaxConnections = 10000;

    /// The low 32 bits of the mask count.
    explicit MultiServer(long mask);
    ~MultiServer() override;

    /// Ends discovery with a farewell, stops listening and deletes all connections. False, with an ERROR line, when
    /// the system reports a failure; closed all the same.
    bool close() override;

    using MultiCommunicator::open;

    /// Listens at `host` and `port` as `Server::open` does and, when `announce` is set, can be discovered. False, with
    /// an ERROR line, when it cannot listen; true also when it cannot be discovered, see `isAnnouncing`.
    virtual bool open(const std::string& host, unsigned short port, bool announce);

    [[nodiscard]] bool isAnnouncing() const { return announceThread_ != nullptr; }
    /// The bound port; throws `Exception` before the first `open`.
    [[nodiscard]] unsigned short getLocalPort() const { return server_.getLocalPort(); }
    /// What is announced, from `open` on.
    [[nodiscard]] const ServerInfoEvent& getInfo() const { return info_; }

    [[nodiscard]] long getMask() const { return mask_; }
    [[nodiscard]] unsigned short getId() const { return id_; }
    void setId(unsigned short id) { id_ = id; }

    /// Whether accepted connections send small packets at once; false at first.
    void setTcpNoDelay(bool on) { tcpNoDelay_ = on; }

    /// Whether the port may be shared with other servers of the same user, see `Server::setPortSharing`.
    void setPortSharing(bool on) { server_.setPortSharing(on); }

    /// More are closed as they come, with an ERROR line; 0: no limit.
    void setMaxConnections(int connections) { maxConnections_ = connections; }

    /// Where to be discovered, by address or name: one interface or several instead of the one that carries the host's
    /// own address. The first one's address is announced then. False when one does not exist; nothing changes then.
    bool setDiscoveryInterfaces(const std::vector<std::string>& addressesOrNames);
    bool setDiscoveryInterface(const std::string& addressOrName) { return setDiscoveryInterfaces({addressOrName}); }

    /// How many routers an announcement may pass, see `Multicast::setTTL`.
    void setDiscoveryTTL(int hops) { multicast_.setTTL(hops); }

    /// The numeric address that clients shall connect to, or a name, whose first address `open` looks up; empty: as
    /// above. Clients do not look names up.
    void setAnnouncedHost(const std::string& host) { announcedHost_ = host; }

    /// See `Server::setBacklog`.
    void setBacklog(int connections) { server_.setBacklog(connections); }

    /// Queries that come faster than this, milliseconds, are answered once; 0, the default: each.
    void setMinimumAnswerInterval(int ms) { answerIntervalMs_ = ms; }

private:
    int connectThread();
    [[nodiscard]] bool acceptOne(std::unique_ptr<Client>& refused);
    [[nodiscard]] bool isUsable(Client& client);

    int multicastThread();
    void fillInfo();
    [[nodiscard]] std::string hostToAnnounce() const;

    void stopAnnouncing();
    void stopAccepting();

    ServerInfoEvent info_;
    Server server_;
    std::unique_ptr<Zendro::ObjectThread<MultiServer>> acceptThread_;
    Multicast multicast_;
    std::unique_ptr<Zendro::ObjectThread<MultiServer>> announceThread_;
    long mask_;
    unsigned short id_ = 0;
    bool tcpNoDelay_ = false;

    int maxConnections_ = kDefaultMaxConnections;
    int answerIntervalMs_ = 0;
    std::string announcedHost_;
    InetAddress interfaceAddress_;  // invalid: nobody chose one
    AcceptPause acceptPause_;
};

}  // namespace Varnex
