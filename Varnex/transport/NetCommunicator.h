#pragma once

#include <Varnex/transport/Communicator.h>
#include <Varnex/transport/ConnectionOptions.h>
#include <Varnex/transport/NonBlockingSender.h>
#include <Varnex/transport/SocketAddress.h>
#include <Varnex/transport/UniqueFd.h>
#include <Varnex/transport/WakeUpPipe.h>

#include <cstddef>

namespace Varnex {

/// A byte channel over a connected stream socket.
///
/// Closed until a `Client` or a `Server` gives it a descriptor; `close` makes it closed again, and it may be opened
/// anew. One thread may send while another waits and receives; `breakWait` is for any thread. `close`, and everything
/// else, is for the owner: closing does not end another thread's wait, so break the wait first. Failures of the data
/// path print an ERROR line and return false; a broken connection never raises SIGPIPE.
class VARNEX_API NetCommunicator : public Communicator, public NonBlockingSender {
public:
    NetCommunicator();

    // The order of the virtual operations is binary interface: append, never reorder.
    ~NetCommunicator() override;

    /// True also when closed already. The wake-up pipe, with the wake-ups in it, stays.
    bool close() override;

    /// Sends `n` bytes, blocking until the system took all of them; `n` tells how many it took, also on failure.
    /// False: not connected, `data` is null, or send(2) failed.
    bool send(const void* data, int& n) override;

    /// Gathers the chunks into as few system calls as possible; the array stays as it is. Prints nothing. True when
    /// everything was sent.
    bool send(const Chunk* chunks, int count, int& sent) override;

    /// One recv(2) for at most `n` bytes. A connection that the peer reset counts as ended: true with 0.
    /// False: not connected, `data` is null, `n` is 0, or recv(2) failed.
    bool receive(void* data, int& n) override;

    bool waitForData() override;
    void breakWait() override;
    int waitForData(int ms) override;
    bool dataAvail(int& n) override;

    bool trySend(const Chunk* chunks, int count, int& sent) override;
    [[nodiscard]] int getSendDescriptor() const override { return getDescriptor(); }
    void abort() override;

    [[nodiscard]] bool isOpen() const { return descriptor_.isOpen(); }
    /// For options and polls of the application's own; -1 when closed, never to be closed by the caller.
    [[nodiscard]] int getDescriptor() const { return descriptor_.get(); }
    /// Of the present connection, or of the last one.
    [[nodiscard]] const SocketAddress& getLocalAddress() const { return localAddress_; }
    [[nodiscard]] const SocketAddress& getRemoteAddress() const { return remoteAddress_; }

    /// Tells the peer that nothing more will be sent; receiving goes on. Closing with received bytes unread makes the
    /// system throw away what the peer has not taken yet: to be sure that it got everything, shut down, then receive
    /// until its end of the stream. False when not connected.
    bool shutdownSend();

    /// Flags for each send(2) and recv(2), 0 at first; MSG_NOSIGNAL is always added.
    void setSendFlags(int flags) { sendFlags_ = flags; }
    void setReceiveFlags(int flags) { receiveFlags_ = flags; }
    [[nodiscard]] int getSendFlags() const { return sendFlags_; }
    [[nodiscard]] int getReceiveFlags() const { return receiveFlags_; }

    /// Sends small packets at once (true) or lets the system collect them, on the present connection only. An ERROR
    /// line on failure, so also when closed.
    void setTcpNoDelay(bool on);
    [[nodiscard]] bool getTcpNoDelay() const;

    /// Lets each wait look for data for `us` microseconds before it sleeps; 0, the default: sleep at once. Saves the
    /// time that waking up takes, for the price of a busy processor: for programs that have one to spare and exchange
    /// messages that are answered at once. Negative values count as 0.
    void setSpinTime(int us) { spinUs_ = us; }

    // The settings below hold for the present connection and for later ones of this object. False, with an ERROR line,
    // when the present connection refuses; a value out of range is refused without one. The earlier setting stays then.

    /// Ends a `send` that makes no progress for `ms` milliseconds; 0, the default, waits for ever. The stream is out of
    /// step after that: close it.
    bool setSendTimeout(int ms);

    static constexpr int kMaxKeepAliveSeconds = 32767;

    /// Probes an idle peer after `idleSeconds`, and then four times, a quarter of that (at least a second) apart;
    /// 0, the default: never.
    bool setKeepAlive(int idleSeconds);

    /// Gives the connection up when sent data stays unacknowledged for `ms` milliseconds; 0, the default: the system's
    /// own limit.
    bool setUserTimeout(int ms);

protected:
    /// Takes over a connected socket, instead of the present one.
    void adopt(UniqueFd descriptor, const SocketAddress& local, const SocketAddress& remote);

private:
    using OptionSetter = bool (*)(int fd, int value);

    [[nodiscard]] long sendSome(const char* bytes, std::size_t size) const;
    bool setOption(int& option, int value, OptionSetter apply);
    bool applyOption(int value, OptionSetter apply) const;

    WakeUpPipe wakeUp_;
    int sendFlags_ = 0;
    int receiveFlags_ = 0;
    UniqueFd descriptor_;
    SocketAddress localAddress_;
    SocketAddress remoteAddress_;
    ConnectionOptions options_;
    int spinUs_ = 0;
};

}  // namespace Varnex
