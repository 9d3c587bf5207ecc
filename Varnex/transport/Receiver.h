#pragma once

#include <Varnex/Export.h>

namespace Varnex {

/// The receiving half of a byte channel. One thread waits and receives; any thread may call `breakWait`.
class VARNEX_API Receiver {
public:
    /// What `waitForData(int)` returns.
    enum WaitResult {
        WaitFailed = 0,
        WaitBroken = 1,  ///< ended by `breakWait`
        WaitData = 2,    ///< data, or the end of the stream, can be received
        WaitTimedOut = 3
    };

    Receiver() = default;
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    // The order of the virtual operations is binary interface: append, never reorder.
    virtual ~Receiver();

    /// Closes the channel; true also when it was closed already. It does not end a wait: call `breakWait` first.
    virtual bool close() = 0;

    /// Receives up to `n` bytes, blocking while there are none; on return `n` is how many came, 0 at the end of the
    /// stream. False on failure.
    virtual bool receive(void* data, int& n) = 0;

    /// Waits without limit; true exactly when there is something to receive.
    virtual bool waitForData() = 0;

    /// Waits at most `ms` milliseconds, -1 without limit. One of `WaitResult`.
    virtual int waitForData(int ms) = 0;

    /// Ends one wait, the present or the next.
    virtual void breakWait() = 0;

    /// Tells how many bytes can be received without blocking; false when that cannot be told.
    virtual bool dataAvail(int& n) = 0;
};

}  // namespace Varnex
