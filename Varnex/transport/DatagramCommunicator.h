#pragma once

#include <Varnex/transport/InetAddress.h>
#include <Varnex/transport/NetCommunicator.h>

#include <atomic>
#include <memory>

namespace Varnex {

/// A byte channel over an IPv4 datagram socket: what `UDP` and `Multicast` have in common.
///
/// Each send is one datagram of at most 65,507 bytes. A receive that takes less than a whole datagram leaves the rest
/// for the next receives, which never reach into the datagram after it; so an event that travels as one datagram is
/// received like any other. Threads as for `NetCommunicator`; one thread receives.
class VARNEX_API DatagramCommunicator : public NetCommunicator {
public:
    ~DatagramCommunicator() override;

    using NetCommunicator::waitForData;

    /// Forgets what is unread, too.
    bool close() override;

    /// Sends one datagram to the destination of the class, as `sendTo` does.
    bool send(const void* data, int& n) override;
    bool send(const Chunk* chunks, int count, int& sent) override;
    [[nodiscard]] bool keepsMessages() const override { return true; }

    /// What is unread of the last datagram, else the next datagram, blocking while there is none; 0 bytes are an empty
    /// datagram. False: closed, `data` is null, `n` is 0, the wait was broken, or the system refused (an ERROR line).
    bool receive(void* data, int& n) override;

    /// Unread bytes count as data; a pending wake-up comes before them.
    int waitForData(int ms) override;
    /// The unread bytes, else the size of the next datagram.
    bool dataAvail(int& n) override;

    /// A datagram that the system refuses is lost, after its ERROR line; false only when closed or aborted.
    bool trySend(const Chunk* chunks, int count, int& sent) override;
    /// From now on waits fail, and nothing is sent or received.
    void abort() override;

    /// Makes and binds the socket, closing an earlier one. False, with an ERROR line, on failure; closed then.
    virtual bool open() = 0;

    /// Sends one datagram. False, with an ERROR line, when the system refuses; without one when closed or `data` is
    /// null.
    bool sendTo(const void* data, int& n, const InetAddress& to, unsigned short port);
    /// Gathers the chunks into one datagram; prints nothing.
    bool sendTo(const Chunk* chunks, int count, int& sent, const InetAddress& to, unsigned short port);

    /// Throws away what is unread of the last datagram, such as the rest of one that turned out to be no event.
    void discardDatagram() { unread_ = 0; }

    /// Who sent the last datagram; the port in host order.
    [[nodiscard]] const InetAddress& getLastAddress() const { return lastAddress_; }
    [[nodiscard]] unsigned short getLastPort() const { return lastPort_; }

    /// The port to bind, and to send to unless a class says otherwise; 0: the system chooses. For the next `open`.
    void setPort(unsigned short port) { port_ = port; }
    /// The bound port while open.
    [[nodiscard]] unsigned short getPort() const;

protected:
    DatagramCommunicator() = default;

    /// Where `send` goes. The default is an address that no datagram can be sent to.
    [[nodiscard]] const InetAddress& destination() const { return destination_; }
    void setDestinationAddress(const InetAddress& to) { destination_ = to; }
    [[nodiscard]] virtual unsigned short destinationPort() const { return getPort(); }

    /// A fresh socket, not bound yet. Closed, after an ERROR line, when the system refuses.
    [[nodiscard]] static UniqueFd makeDatagramSocket();
    /// Binds to all addresses and the port. False after an ERROR line.
    [[nodiscard]] bool bindToPort(int fd) const;
    /// Takes over a bound socket. False when the system cannot tell its port.
    [[nodiscard]] bool adoptBound(UniqueFd socket);

private:
    [[nodiscard]] int take(void* data, int size);

    std::unique_ptr<char[]> buffer_;
    std::atomic<bool> aborted_ = false;
    int position_ = 0;
    int capacity_ = 0;
    int unread_ = 0;
    InetAddress lastAddress_;
    unsigned short lastPort_ = 0;
    InetAddress destination_;
    unsigned short port_ = 0;
};

}  // namespace Varnex
