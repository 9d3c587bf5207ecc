#pragma once

#include "TerminalLine.h"

#include <Zendro/Mutex.h>

#include <string>

namespace VarnexTool {

/// A line on the standard output that changes from time to time. On a terminal each takes the place of the one before,
/// and notes on the error stream go above it. Any thread.
class StatusLine {
public:
    StatusLine();
    ~StatusLine();
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    /// False when the output is gone.
    bool show(const std::string& line);
    void note(const std::string& line);

private:
    const bool isTerminal_;
    Zendro::Mutex mutex_;
    TerminalLine line_ VARNEX_GUARDED_BY(mutex_);
};

}  // namespace VarnexTool
