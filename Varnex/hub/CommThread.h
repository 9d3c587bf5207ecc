#pragma once

#include <Varnex/hub/MultiCommunicator.h>

#include <Zendro/ObjectThread.h>
#include <Zendro/Semaphore.h>

#include <atomic>
#include <optional>

namespace Varnex {

/// Watches one connection of a hub and feeds it. Made by `createCommThread`, for subclasses with a `send` of their own.
///
/// The thread runs from the constructor on, so also while the constructors of subclasses run.
class VARNEX_API MultiCommunicator::CommThread {
public:
    CommThread(MultiCommunicator* owner, Communicator* connection);
    CommThread(const CommThread&) = delete;
    CommThread& operator=(const CommThread&) = delete;

    // The order of the virtual operations is binary interface: append, never reorder.

    /// Ends the thread; the connection is only told to break its wait.
    virtual ~CommThread();

    /// Sends on the connection. Called by one thread at a time.
    virtual bool send(const void* data, int& length);

    [[nodiscard]] virtual SendCounters getSendCounters() const { return counters_; }

    [[nodiscard]] Communicator* getCommunicator() const { return communicator_; }

protected:
    /// Tells the hub's monitor, once. Any thread.
    void reportLost(LostReason reason);

private:
    friend class MultiCommunicator;

    int recvThread();
    /// Readies a lost connection for being taken out. False, and it is lost again later, when the consumer has it.
    bool retire(LostReason reason);
    /// Whether the monitor knows of its loss; it is stopping then.
    bool isLost();
    void requestStop();
    void awaitEnd();

    MultiCommunicator* owner_;
    Communicator* communicator_;
    const unsigned long long number_;
    Zendro::Semaphore resumeSemaphore_;
    SendCounters counters_;

    // Guarded by the hub's queueMutex_.
    Connections::iterator readyPosition_;  // the queue's end while not queued
    bool lost_ = false;                    // and the monitor knows
    std::optional<LostReason> reason_;     // of a loss that the consumer did not know of yet
    bool stopping_ = false;                // reports nothing any more
    bool stopRequested_ = false;
    bool ended_ = false;

    int breaks_ = 0;                           // wake-ups given to the connection
    Zendro::ObjectThread<CommThread> thread_;  // last: it uses the others
};

}  // namespace Varnex
