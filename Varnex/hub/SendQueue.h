#pragma once

#include <Varnex/hub/SendCounters.h>
#include <Varnex/hub/SendPolicy.h>
#include <Varnex/transport/Chunk.h>

#include <Zendro/Mutex.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>

namespace Varnex {

// Private to the library.

/// One message, shared by the queues it waits in.
struct QueuedMessage {
    QueuedMessage() = default;
    QueuedMessage(const void* data, int bytes);

    std::shared_ptr<const char[]> data;
    int size = 0;
};

/// The messages that wait for one connection, bounded by a policy. Any thread pushes; one thread sends: it asks for the
/// `next` chunks, sends some of their bytes without blocking, and says with `took` how many.
class SendQueue {
public:
    enum class Verdict { Waiting, Dropped, Overflow, Closed };

    explicit SendQueue(const SendPolicy& policy) : policy_(policy) {}

    /// `Overflow`: the policy says to disconnect.
    Verdict push(QueuedMessage message) VARNEX_EXCLUDES(mutex_);

    /// Fills in what comes next, at most `max` chunks; how many. They stay valid until `took`.
    int next(Chunk* chunks, int max) VARNEX_EXCLUDES(mutex_);
    void took(int bytes) VARNEX_EXCLUDES(mutex_);

    /// Drops everything, and all that is still pushed.
    void close() VARNEX_EXCLUDES(mutex_);

    [[nodiscard]] SendCounters getCounters() const VARNEX_EXCLUDES(mutex_);

private:
    [[nodiscard]] bool fits(int size) const VARNEX_REQUIRES(mutex_);
    [[nodiscard]] bool couldFit(int size) const VARNEX_REQUIRES(mutex_);
    void awaitLanding() VARNEX_REQUIRES(mutex_);
    bool replaceOlder(const QueuedMessage& message) VARNEX_REQUIRES(mutex_);
    void putBack(QueuedMessage& message, unsigned long long number) VARNEX_REQUIRES(mutex_);
    void drop(int size) VARNEX_REQUIRES(mutex_);
    void keepNewestOnly() VARNEX_REQUIRES(mutex_);
    void append(QueuedMessage message) VARNEX_REQUIRES(mutex_);
    void dropOldest() VARNEX_REQUIRES(mutex_);
    Verdict refuse(int size, Verdict verdict) VARNEX_REQUIRES(mutex_);

    const SendPolicy policy_;
    mutable Zendro::Mutex mutex_;
    std::deque<QueuedMessage> waiting_ VARNEX_GUARDED_BY(mutex_);
    unsigned long long firstNumber_ VARNEX_GUARDED_BY(mutex_) = 0;  // of waiting_.front(); the others count on
    std::deque<QueuedMessage> sending_ VARNEX_GUARDED_BY(mutex_);   // before them; at most one, begun, once it landed
    int begunBytes_ VARNEX_GUARDED_BY(mutex_) = 0;                  // of sending_.front(), sent already
    bool inFlight_ VARNEX_GUARDED_BY(mutex_) = false;               // between next and took
    std::condition_variable_any landed_;
    bool closed_ VARNEX_GUARDED_BY(mutex_) = false;
    SendCounters counters_ VARNEX_GUARDED_BY(mutex_);

    // From the time it was full until it is empty: the number of the newest waiting message of each key.
    bool conflating_ VARNEX_GUARDED_BY(mutex_) = false;
    std::unordered_map<std::string, unsigned long long> newest_ VARNEX_GUARDED_BY(mutex_);
};

}  // namespace Varnex
