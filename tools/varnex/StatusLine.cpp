#include "StatusLine.h"

#include "EventLog.h"

#include <iostream>

#include <unistd.h>

namespace VarnexTool {

StatusLine::StatusLine() : isTerminal_(::isatty(STDOUT_FILENO) == 1), line_(std::cout, STDOUT_FILENO) {}

StatusLine::~StatusLine() {
    if (!line_.shown().empty()) std::cout << '\n' << std::flush;
}

bool StatusLine::show(const std::string& line) {
    const Zendro::MutexLock lock(mutex_);
    if (isTerminal_)
        line_.show(line);
    else
        std::cout << line + '\n' << std::flush;
    return static_cast<bool>(std::cout);
}

void StatusLine::note(const std::string& line) {
    if (!isTerminal_) return EventLog::note(line);  // must not wait for whoever reads the status
    const Zendro::MutexLock lock(mutex_);
    const std::string shown = line_.shown();
    line_.clear();
    EventLog::note(line);
    line_.show(shown);
}

}  // namespace VarnexTool
