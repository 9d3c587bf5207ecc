#pragma once

#include <Varnex/hub/SendQueue.h>

namespace Varnex {

// Private to the library.

/// While it lives, the queues that one thread sends the same bytes to share one copy of them.
class BroadcastScope {
public:
    BroadcastScope() : outer_(current_) { current_ = this; }
    ~BroadcastScope() { current_ = outer_; }
    BroadcastScope(const BroadcastScope&) = delete;
    BroadcastScope& operator=(const BroadcastScope&) = delete;

    /// A copy of the bytes, the scope's own when there is one. `data` stays unchanged while the scope lives.
    static QueuedMessage messageOf(const void* data, int size);

private:
    static thread_local BroadcastScope* current_;

    BroadcastScope* outer_;
    const void* data_ = nullptr;
    QueuedMessage message_;
};

}  // namespace Varnex
