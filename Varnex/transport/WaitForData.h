#pragma once

#include <string_view>

namespace Varnex {

class WakeUpPipe;

// Private to the library: the wait that communicators have in common.

/// What a communicator prints when its wait fails.
struct WaitMessages {
    std::string_view noPipe;                       ///< on the error stream
    void (*printNoSelect)(std::string_view line);  ///< to the stream that "ERROR: Cannot select" belongs on
};

/// Waits for data on `fd` as `Receiver::waitForData(int)` does: one of its results. -1 waits for nothing and fails. The
/// first `spinUs` microseconds go without sleeping. Makes the pipe on first need.
int waitForData(int fd, WakeUpPipe& wakeUp, int ms, int spinUs, const WaitMessages& messages);

/// Leaves one wake-up, making the pipe on first need.
void breakWait(WakeUpPipe& wakeUp, const WaitMessages& messages);

}  // namespace Varnex
