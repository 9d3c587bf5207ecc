#pragma once

#include <Varnex/hub/LostReason.h>
#include <Varnex/hub/SendQueue.h>

#include <atomic>
#include <functional>

namespace Varnex {

class NonBlockingSender;

// Private to the library.

/// A queue and the connection that it goes out on. Any thread pushes, the writer serves.
class QueuedConnection {
public:
    enum class Progress { Nothing, Some, Blocked };

    /// Of one system call.
    static constexpr int kMaxChunks = 1024;

    /// `onGivenUp` is called once at most, from a pushing thread or the writer, and only before `detach` returns.
    QueuedConnection(NonBlockingSender& target, const SendPolicy& policy, std::function<void(LostReason)> onGivenUp);

    /// False once the connection is given up.
    bool push(QueuedMessage message);

    /// Sends as much as the connection takes in one system call.
    Progress serve() VARNEX_EXCLUDES(serving_);

    /// From here on the connection is not touched again, and what waits is dropped.
    void detach() VARNEX_EXCLUDES(serving_);

    /// To poll for room; -1 when there is nothing to wait for.
    [[nodiscard]] int getDescriptor() VARNEX_EXCLUDES(serving_);

    [[nodiscard]] SendCounters getCounters() const { return queue_.getCounters(); }

private:
    void giveUp(LostReason reason);

    SendQueue queue_;
    std::function<void(LostReason)> onGivenUp_;
    std::atomic<bool> givenUp_ = false;
    Zendro::Mutex serving_;      // held while the connection is used
    NonBlockingSender* target_;  // null once detached; written under serving_
};

}  // namespace Varnex
