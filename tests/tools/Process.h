#pragma once

#include <tests/support/ChildProcess.h>

/// The varnex command as a process of its own.
struct Process : ChildProcess {
    /// `words`: the arguments, as a shell reads them.
    explicit Process(const std::string& words) : ChildProcess("'" VARNEX_COMMAND "' " + words) {}
};
