#include "ProgressBar.h"

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
    if (now < next_) return;
    next_ = now + kInterval;
    status_.seconds = std::chrono::duration<double>(now - start_).count();
    line_.show(status_.text());
}

}  // namespace VarnexTool
