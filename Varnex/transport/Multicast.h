#pragma once

#include <Varnex/transport/DatagramCommunicator.h>
#include <Varnex/transport/NetworkInterface.h>

#include <string>
#include <vector>

namespace Varnex {

/// Datagrams to and from everyone in an IPv4 multicast group, on one network interface or several. Several processes on
/// a machine can be in one group; each hears the others and itself.
///
/// The settings hold for the next `open`.
class VARNEX_API Multicast : public DatagramCommunicator {
public:
    static constexpr unsigned short kDefaultPort = 4711;
    static constexpr int kDefaultTTL = 2;

    Multicast();
    ~Multicast() override;

    /// Binds the port, shared with other processes, and joins the group. False, with an ERROR line, when any step
    /// fails, a TTL that the system refuses among them.
    bool open() override;

    /// One datagram on each interface. False when one of them fails.
    bool send(const void* data, int& n) override;
    bool send(const Chunk* chunks, int count, int& sent) override;

    /// The group. True when it is one: first octet 224 to 239; it is stored all the same.
    bool setAddress(const std::string& dotted);
    bool setAddress(const InetAddress& group);
    [[nodiscard]] const InetAddress& getAddress() const { return destination(); }

    /// Where to join and to send: the interface with this address; 0.0.0.0, the default: the system chooses.
    void setInterface(const InetAddress& address);
    /// The same by dotted address or by name, such as "eth0". False when there is no such interface; nothing changes
    /// then.
    bool setInterface(const std::string& addressOrName);
    /// Several of them, each once. False, and nothing changes, when one does not exist or there is none at all. What is
    /// sent with `sendTo` takes only one of them, any.
    bool setInterfaces(const std::vector<std::string>& addressesOrNames);

    [[nodiscard]] const std::vector<NetworkInterface>& getInterfaces() const { return interfaces_; }

    /// How many routers a datagram may pass, 0 to 255: 1 stays on the local network, 0 on this machine.
    void setTTL(int hops) { ttl_ = hops; }
    [[nodiscard]] int getTTL() const { return ttl_; }

private:
    [[nodiscard]] bool configure(int fd) const;
    [[nodiscard]] bool applyTTL(int fd) const;
    template <class SendOnce>
    bool sendOnEach(int& n, SendOnce sendOnce);

    int ttl_ = kDefaultTTL;
    std::vector<NetworkInterface> interfaces_{NetworkInterface()};  // never empty
};

}  // namespace Varnex
