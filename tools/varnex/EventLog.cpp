#include "EventLog.h"

#include "Failure.h"

#include <iostream>

namespace VarnexTool {

bool EventLog::take(const Varnex::Event& event, const std::string& peer, std::string& lines) {
    const WallTime received = std::chrono::system_clock::now();
    const unsigned long long number = ++taken_;
    if (options_.count != 0 && number > options_.count) return false;
    if (options_.summary) {
        const Zendro::MutexLock lock(summaryMutex_);
        summary_.add(event, received);
    }
    if (!options_.quiet) lines += options_.format.line(event, peer, received) + "\n";
    if (number != options_.count) return true;
    write(lines);
    stop_.stop();
    return false;
}

void EventLog::write(std::string& lines) {
    if (lines.empty()) return;
    {
        const Zendro::MutexLock lock(outputMutex_);
        std::cout << lines << std::flush;
        if (!std::cout) outputGone_ = true;
    }
    lines.clear();
    if (outputGone_) stop_.stop();
}

void EventLog::note(const std::string& line) {
    std::cerr << line + "\n" << std::flush;
}

void EventLog::finish() {
    if (outputGone_) throw Failure("cannot write to the standard output");
    if (!options_.summary) return;
    std::string text;
    {
        const Zendro::MutexLock lock(summaryMutex_);
        text = summary_.text(options_.format.json);
    }
    write(text);
    if (outputGone_) throw Failure("cannot write to the standard output");
}

}  // namespace VarnexTool
