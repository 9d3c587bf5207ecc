#pragma once

#include <Varnex/hub/MultiCommunicator.h>
#include <Varnex/transport/Communicator.h>

#include <Zendro/ObjectThread.h>

#include <condition_variable>
#include <deque>
#include <memory>

namespace Varnex {

// Private to the library.

/// Tells the application what becomes of a hub's connections, in order, on a thread of its own, and deletes those that
/// the hub has given up. Without callbacks and deletions to make there is no thread.
class ConnectionMonitor {
public:
    explicit ConnectionMonitor(MultiCommunicator& hub) : hub_(hub), thread_(this, &ConnectionMonitor::main) {}
    ~ConnectionMonitor();

    void enable() { enabled_ = true; }
    [[nodiscard]] bool isEnabled() const { return enabled_; }
    void setConnectedCallback(MultiCommunicator::ConnectedCallback callback);
    void setLostCallback(MultiCommunicator::LostCallback callback);

    /// Starts the thread, if it is needed and does not run.
    void start();
    /// Tells what there still is to tell and ends the thread.
    void stop();

    // From any thread, also with locks of the hub held.
    void connected(Communicator* connection);
    /// It is not connected after all.
    void withdraw(const Communicator* connection);
    void lost(unsigned long long number, Communicator* connection, LostReason reason);
    /// Deletes the connection in the end; `isKnown`: it was `lost` already.
    void dropped(unsigned long long number, std::unique_ptr<Communicator> connection, LostReason reason, bool isKnown);

private:
    struct News {
        Communicator* connection = nullptr;
        bool isLost = false;
        LostReason reason = LostReason::Dropped;
        unsigned long long number = 0;        // of a lost one that the hub may still have
        std::unique_ptr<Communicator> owner;  // of one that was dropped
        bool isKnown = false;                 // was `lost` before it was dropped
    };

    void post(News news);
    int main();
    void tell(News& news);

    MultiCommunicator& hub_;
    std::atomic<bool> enabled_ = false;
    MultiCommunicator::ConnectedCallback onConnected_;
    MultiCommunicator::LostCallback onLost_;

    Zendro::Mutex mutex_;
    std::condition_variable_any changed_;
    std::deque<News> news_ VARNEX_GUARDED_BY(mutex_);
    bool running_ VARNEX_GUARDED_BY(mutex_) = false;
    Zendro::ObjectThread<ConnectionMonitor> thread_;  // last: it uses the others
};

}  // namespace Varnex
