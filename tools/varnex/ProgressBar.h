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

    /// `length`: bytes of the whole; -1: not known.
    explicit ProgressBar(long long length);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// That many bytes more have been carried.
    void add(std::size_t bytes);

private:
    using Clock = std::chrono::steady_clock;

    TerminalLine line_;
    TransferStatus status_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point next_ = start_ + kInterval;
};

}  // namespace VarnexTool
