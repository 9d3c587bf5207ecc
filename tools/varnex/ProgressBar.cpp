#include "ProgressBar.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include <unistd.h>

namespace VarnexTool {

ProgressBar::ProgressBar(long long begun, long long length)
    : bytes_(static_cast<unsigned long long>(begun)),
      line_(std::cerr, STDERR_FILENO),
      status_{bytes_, length},
      thread_(this, &ProgressBar::keepShowing) {
    line_.show(status_.text());
    if (pause_.open()) thread_.start();
}

ProgressBar::~ProgressBar() {
    pause_.breakWait();
    thread_.join();
    line_.clear();
}

int ProgressBar::keepShowing() {
    while (pause_.wait(static_cast<int>(kInterval.count()))) update(Clock::now());
    return 0;
}

void ProgressBar::update(Clock::time_point now) {
    const unsigned long long before = std::exchange(status_.bytes, bytes_.load(std::memory_order_relaxed));
    if (status_.bytes != before) moved_ = now;
    status_.isStalled = now - moved_ >= kPatience;
    updateRate(status_.bytes - before, now);
    line_.show(status_.text());
}

/// The average of all at first, then the newest count most.
void ProgressBar::updateRate(unsigned long long newBytes, Clock::time_point now) {
    const std::chrono::duration<double> passed = now - std::exchange(last_, now);
    const double newest = static_cast<double>(newBytes) / passed.count();
    const double weight = passed / std::min<std::chrono::duration<double>>(now - start_, kMemory);
    status_.rate += (newest - status_.rate) * std::min(weight, 1.0);
}

}  // namespace VarnexTool
