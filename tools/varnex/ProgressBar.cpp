#include "ProgressBar.h"

#include <algorithm>
#include <iostream>

#include <unistd.h>

namespace VarnexTool {

ProgressBar::ProgressBar(long long length) : line_(std::cerr, STDERR_FILENO) {
    status_.length = length;
    line_.show(status_.text());
}

ProgressBar::~ProgressBar() {
    line_.clear();
}

void ProgressBar::add(std::size_t bytes) {
    status_.bytes += bytes;
    const Clock::time_point now = Clock::now();
    if (now - last_ < kInterval) return;
    updateRate(now);
    line_.show(status_.text());
}

/// The average of all at first, then the newest count most.
void ProgressBar::updateRate(Clock::time_point now) {
    const std::chrono::duration<double> passed = now - last_;
    const double newest = static_cast<double>(status_.bytes - lastBytes_) / passed.count();
    const double weight = passed / std::min<std::chrono::duration<double>>(now - start_, kMemory);
    status_.rate += (newest - status_.rate) * std::min(weight, 1.0);
    last_ = now;
    lastBytes_ = status_.bytes;
}

}  // namespace VarnexTool
