#pragma once

#include "EventLog.h"

#include <CLI/CLI.hpp>

#include <chrono>
#include <string>

namespace VarnexTool {

/// How received events are printed and when that ends, as options of the command line. A value.
struct PrintOptions {
    void addTo(CLI::App& app);

    /// Of the log; sets the length limit of the process. Once, after the command line was read.
    [[nodiscard]] EventLog::Options use() const;

    [[nodiscard]] std::chrono::duration<double> timeLimit() const { return std::chrono::duration<double>(seconds); }

    EventLog::Options log;
    std::string colour = "auto";
    double seconds = 0;
    unsigned int maxLength = 1 << 20;  // printing takes many times the memory of an event
};

/// The option --max-length, shared by all commands that receive.
void addMaxLengthOption(CLI::App& app, unsigned int& bytes);

/// The option --seconds.
void addSecondsOption(CLI::App& app, double& seconds);

}  // namespace VarnexTool
