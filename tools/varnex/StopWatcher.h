#pragma once

#include <Varnex/transport/UniqueFd.h>

#include <Zendro/ObjectThread.h>

#include <atomic>
#include <chrono>
#include <functional>

namespace VarnexTool {

using SteadyTime = std::chrono::steady_clock::time_point;

/// Ends a command on Ctrl-C, on SIGTERM, when its time is over or when it says so itself.
///
/// Make it before other threads, which inherit that the two signals are blocked; they stay so. What cannot be woken,
/// such as a connect, a send to a peer that never reads or a full output pipe, has `kGrace` to end after the stop; then
/// the process ends with exit code 0.
class StopWatcher {
public:
    static constexpr std::chrono::seconds kGrace{2};

    /// `onStop` is called once, from any thread, and does not throw. A limit of 0: none. Throws `Failure`.
    explicit StopWatcher(std::chrono::duration<double> limit, std::function<void()> onStop = {});
    ~StopWatcher();
    StopWatcher(const StopWatcher&) = delete;
    StopWatcher& operator=(const StopWatcher&) = delete;

    /// Any thread, any number of times.
    void stop();
    [[nodiscard]] bool isStopped() const { return stopped_; }

    /// Sleeps until then; false at once when stopped. Any thread.
    [[nodiscard]] bool sleepUntil(SteadyTime time) const;

private:
    int watch();

    std::chrono::duration<double> limit_;
    std::function<void()> onStop_;
    Varnex::UniqueFd signals_;    // readable when a signal has come
    Varnex::UniqueFd stopEvent_;  // readable once stopped
    Varnex::UniqueFd endEvent_;   // readable when this object goes
    std::atomic<bool> stopped_ = false;
    Zendro::ObjectThread<StopWatcher> thread_;
};

}  // namespace VarnexTool
