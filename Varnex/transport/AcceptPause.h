#pragma once

#include <Varnex/Export.h>
#include <Varnex/transport/Wait.h>

#include <chrono>
#include <string_view>

namespace Varnex {

class IOException;

/// What a loop that accepts connections does when that fails: it prints a row of failures once, and goes on after a
/// pause, unless the listening socket itself is gone. One thread, but `breakWait` is for any.
class VARNEX_API AcceptPause {
public:
    static constexpr std::chrono::milliseconds kPause{100};

    /// Needed for `pauseAfter`. False, with an ERROR line: the system refuses.
    bool open() { return pause_.open(); }
    /// Ends a pause, the present or the next.
    void breakWait() { pause_.breakWait(); }

    /// Prints an ERROR line, unless this row of failures was told of already.
    void tell(std::string_view failure);
    /// Prints, too. False: going on later makes no sense.
    [[nodiscard]] bool isPassing(const IOException& failure);
    /// The same, and sleeps. False also when the pause was ended.
    [[nodiscard]] bool pauseAfter(const IOException& failure);
    void succeeded() { isTold_ = false; }

private:
    Wait pause_;
    bool isTold_ = false;
};

}  // namespace Varnex
