#pragma once

#include <Varnex/transport/Client.h>
#include <Varnex/transport/Communicator.h>
#include <Varnex/transport/WakeUpPipe.h>
#include <Varnex/web/FileBody.h>
#include <Varnex/web/Wire.h>

#include <Zendro/Mutex.h>

#include <memory>
#include <optional>
#include <string>

namespace Varnex {

// Private to the library.

/// A web server's end of a connection. A wait for data receives it, too; sending either waits for room, or never: what
/// does not fit then stays here until `sendQueued`.
class WebConnection : public Communicator {
public:
    enum class Sending { Waits, Queues };

    static constexpr int kReceiveSize = 16384;  ///< bytes
    static constexpr int kFileBlock = 65536;    ///< bytes

    /// `sendTimeoutMs`: how long a send may make no progress, -1 without limit.
    WebConnection(std::unique_ptr<Client> socket, std::unique_ptr<Wire> wire, Sending sending, int sendTimeoutMs);
    ~WebConnection() override;

    bool close() override;

    bool send(const void* data, int& n) override;
    bool send(const Chunk* chunks, int count, int& sent) override;
    /// After all that is queued. False: it failed, or the file is too short.
    bool send(FileBody body);

    bool receive(void* data, int& n) override;
    bool waitForData() override;
    int waitForData(int ms) override;
    /// Ends all receiving, but for one that has been taken over.
    void breakWait() override;
    bool dataAvail(int& n) override;

    /// Behaves from now on as every communicator does, on any thread.
    void takeOver();

    /// Tells the peer that no more comes, and drops what it still sends, for a short time.
    void linger();
    /// Ends both directions. Any thread.
    void abort();

    [[nodiscard]] int getDescriptor() const { return socket_->getDescriptor(); }
    [[nodiscard]] const SocketAddress& getRemoteAddress() const { return socket_->getRemoteAddress(); }

    // For one thread that serves many.

    /// That the descriptor can be read; until then no wait asks.
    void setReadable() { isReadable_ = true; }
    /// Whether a wait may find something that no poll tells of.
    [[nodiscard]] bool hasPending() const { return isReadable_ || begin_ < end_ || wire_->hasPending(); }
    [[nodiscard]] bool hasQueued() const { return !queue_.empty() || file_.has_value(); }
    /// Sends of it what fits. False: that failed. `progress` is set when there was room for anything.
    bool sendQueued(bool& progress);

private:
    [[nodiscard]] int waitInterruptibly(int ms);
    [[nodiscard]] int fill(int ms);
    [[nodiscard]] bool sendOne(const Chunk& chunk, int& sent);
    [[nodiscard]] bool sendWaiting(const Chunk* chunks, int count, int& sent);
    [[nodiscard]] bool sendQueueing(const Chunk* chunks, int count, int& sent);
    [[nodiscard]] bool refillQueue();

    std::unique_ptr<Client> socket_;
    std::unique_ptr<Wire> wire_;
    Sending sending_;
    const int sendTimeoutMs_;

    std::unique_ptr<char[]> buffer_;
    int begin_ = 0;
    int end_ = 0;
    bool ended_ = false;
    bool isReadable_ = true;

    std::string queue_;
    std::size_t sent_ = 0;  // of the queue
    std::optional<FileBody> file_;

    Zendro::Mutex closing_;  // against the use of a descriptor that is another's by now
    bool takenOver_ = false;
    WakeUpPipe wakeUp_;
};

}  // namespace Varnex
