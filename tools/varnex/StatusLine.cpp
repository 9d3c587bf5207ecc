#include "StatusLine.h"

#include "EventLog.h"

#include <iostream>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

namespace VarnexTool {

namespace {

/// What fits on one line of the terminal; a line that wraps could not be taken back.
std::string cutToTerminal(const std::string& line) {
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col < 2) return line;
    return line.substr(0, size.ws_col - 1U);
}

}  // namespace

StatusLine::StatusLine() : isTerminal_(::isatty(STDOUT_FILENO) == 1) {}

StatusLine::~StatusLine() {
    if (!shown_.empty()) std::cout << '\n' << std::flush;
}

bool StatusLine::show(const std::string& line) {
    const Zendro::MutexLock lock(mutex_);
    clear();
    if (isTerminal_) shown_ = cutToTerminal(line);
    std::cout << (isTerminal_ ? shown_ : line + '\n') << std::flush;
    return static_cast<bool>(std::cout);
}

void StatusLine::note(const std::string& line) {
    if (!isTerminal_) return EventLog::note(line);  // must not wait for whoever reads the status
    const Zendro::MutexLock lock(mutex_);
    const std::string shown = shown_;
    clear();
    EventLog::note(line);
    std::cout << (shown_ = shown) << std::flush;
}

void StatusLine::clear() {
    if (!std::exchange(shown_, {}).empty()) std::cout << "\r\033[K" << std::flush;
}

}  // namespace VarnexTool
