#pragma once

#include <Varnex/transport/UniqueFd.h>

#include <Zendro/Mutex.h>

#include <atomic>

namespace Varnex {

/// The pipe through which other threads end a wait: one byte is one wake-up. Prints nothing; its owners do.
///
/// Made on first need, by whichever of waiter and waker comes first. `open` and `wake` may be called from any thread;
/// `close` while nobody else uses it. Neither end ever blocks: a full pipe (65,536 wake-ups) refuses the next wake-up.
class VARNEX_API WakeUpPipe {
public:
    /// Makes the pipe unless there is one. False when the system refuses; the next need tries again.
    bool open() VARNEX_EXCLUDES(mutex_);
    void close() VARNEX_EXCLUDES(mutex_);

    /// The end to wait on, -1 before `open`.
    [[nodiscard]] int readEnd() const { return readEnd_.load(std::memory_order_acquire); }

    /// Leaves one wake-up. False when there is no pipe or the byte does not go in.
    bool wake();

    /// Takes one wake-up, if there is one.
    void consume();

private:
    Zendro::Mutex mutex_;
    UniqueFd ownedReadEnd_ VARNEX_GUARDED_BY(mutex_);
    UniqueFd ownedWriteEnd_ VARNEX_GUARDED_BY(mutex_);
    std::atomic<int> readEnd_ = -1;
    std::atomic<int> writeEnd_ = -1;
};

}  // namespace Varnex
