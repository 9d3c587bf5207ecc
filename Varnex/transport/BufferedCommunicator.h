#pragma once

#include <Varnex/transport/Communicator.h>

#include <atomic>
#include <memory>

namespace Varnex {

/// Reads ahead from another communicator in large blocks, so that small messages that arrive together cost one system
/// call and not several each. Sending passes straight through.
///
/// Everything goes through this object while it exists: bytes that it has read are no longer in the inner one, and a
/// wait is broken here, not there. Call `close` here before the inner one is opened anew, or unread bytes of the old
/// connection come first. Threads as for the inner communicator.
class VARNEX_API BufferedCommunicator : public Communicator {
public:
    /// Bytes read ahead at most.
    static constexpr int kDefaultBufferSize = 65536;

    /// `inner` is not null and outlives this object, or is deleted by it when `own` is true. `bufferSize` is at
    /// least 1.
    explicit BufferedCommunicator(Communicator* inner, bool own = false, int bufferSize = kDefaultBufferSize);
    ~BufferedCommunicator() override;

    /// Forgets unread bytes and closes the inner communicator.
    bool close() override;

    bool send(const void* data, int& n) override;
    bool send(const Chunk* chunks, int count, int& sent) override;
    [[nodiscard]] bool keepsMessages() const override { return inner_->keepsMessages(); }

    /// Unread bytes first, as many as there are; then one receive of the inner communicator.
    bool receive(void* data, int& n) override;

    /// Unread bytes count as data in both waits; a pending wake-up comes before them.
    bool waitForData() override;
    int waitForData(int ms) override;
    void breakWait() override;

    [[nodiscard]] Communicator* getInner() const { return inner_; }

    /// Unread bytes and those that the inner communicator has.
    bool dataAvail(int& n) override;

private:
    [[nodiscard]] int unread() const { return end_ - begin_; }
    [[nodiscard]] bool fill();

    Communicator* inner_;
    std::unique_ptr<Communicator> owner_;
    int size_;
    std::unique_ptr<char[]> buffer_;
    int begin_ = 0;
    int end_ = 0;
    std::atomic<int> wakeUps_ = 0;  // so that a wait with unread bytes asks the system only when one is pending
};

}  // namespace Varnex
