#pragma once

#include "TerminalLine.h"
#include "TransferStatus.h"

#include <Varnex/transport/Wait.h>

#include <Zendro/ObjectThread.h>

#include <atomic>
#include <chrono>
#include <cstddef>

namespace VarnexTool {

/// How far a transfer is, on the error stream, which is a terminal; gone in the end. A thread of its own keeps the line
/// true while nothing comes.
class ProgressBar {
public:
    /// Between two updates.
    static constexpr std::chrono::milliseconds kInterval{100};
    /// What the rate goes back to, about.
    static constexpr std::chrono::seconds kMemory{3};
    /// Without a byte, until the transfer counts as stalled.
    static constexpr std::chrono::seconds kPatience{3};

    /// `begun`: bytes that were there before; `length`: of the whole, -1: not known.
    ProgressBar(long long begun, long long length);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// That many bytes more have been carried. Never waits.
    void add(std::size_t bytes) { bytes_.fetch_add(bytes, std::memory_order_relaxed); }

private:
    using Clock = std::chrono::steady_clock;

    int keepShowing();
    void update(Clock::time_point now);
    void updateRate(unsigned long long newBytes, Clock::time_point now);

    std::atomic<unsigned long long> bytes_;

    // Of the thread:
    TerminalLine line_;
    TransferStatus status_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point last_ = start_;   // when the line was shown
    Clock::time_point moved_ = start_;  // when it last had more bytes

    Varnex::Wait pause_;
    Zendro::ObjectThread<ProgressBar> thread_;
};

}  // namespace VarnexTool
