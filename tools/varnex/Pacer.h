#pragma once

#include "StopWatcher.h"

namespace VarnexTool {

/// Spreads work evenly over time. The n-th turn is due n/rate seconds after the first, however long the work takes:
/// lateness does not add up, missed turns are made up for. One thread.
class Pacer {
public:
    /// Turns a second; 0: as fast as it goes. The watcher outlives it.
    Pacer(double rate, const StopWatcher& stop) : rate_(rate), stop_(stop) {}

    /// Waits for the next turn, the first of which is due at once. False when stopped.
    [[nodiscard]] bool wait();

private:
    double rate_;
    const StopWatcher& stop_;
    SteadyTime start_ = std::chrono::steady_clock::now();
    unsigned long long turns_ = 0;
};

}  // namespace VarnexTool
