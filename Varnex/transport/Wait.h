#pragma once

#include <Varnex/transport/WakeUpPipe.h>

namespace Varnex {

/// A timed sleep that any thread can end early; wake-ups are counted, never lost.
///
/// One thread waits, any number wake, also before the wait begins. `open` and `close` are for the owner, while no other
/// thread uses the object. Nothing throws.
class VARNEX_API Wait {
public:
    Wait() = default;
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

    // The order of the virtual operations is binary interface: append, never reorder.
    virtual ~Wait();

    /// Makes the pipe, closing an earlier one. False, and an ERROR line, when the system refuses.
    virtual bool open();

    /// Closes the pipe and forgets pending wake-ups. Always true.
    virtual bool close();

    /// Sleeps at most `ms` milliseconds; there is no "forever", a negative time fails.
    /// True: the time ran out. False: woken (one wake-up is consumed), or the wait failed.
    [[nodiscard]] virtual bool wait(int ms);

    /// Ends one wait, the present or the next. An ERROR line when the object is closed.
    virtual void breakWait();

private:
    WakeUpPipe pipe_;
};

}  // namespace Varnex
