#pragma once

#include "TerminalLine.h"
#include "TransferStatus.h"

#include <chrono>
#include <cstddef>

namespace VarnexTool {

/// How far a transfer is, on the error stream, which is a terminal; gone in the end. One thread.
class ProgressBar {
public:
    /// Between two updates.
    static constexpr std::chrono::milliseconds kInterval{100};
    /// What the rate goes back to, about.
    static constexpr std::chrono::seconds kMemory{3};

    /// `length`: bytes of the whole; -1: not known.
    explicit ProgressBar(long long length);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// That many bytes more have been carried.
    void add(std::size_t bytes);

private:
    using Clock = std::chrono::steady_clock;

    void updateRate(Clock::time_point now);

    TerminalLine line_;
    TransferStatus status_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point last_ = start_;  // when the line was shown
    unsigned long long lastBytes_ = 0;
};

}  // namespace VarnexTool
