#pragma once

#include <iosfwd>
#include <string>

namespace VarnexTool {

/// A line on a terminal, each in the place of the one before, cut to the width. One thread at a time.
class TerminalLine {
public:
    /// `out` writes to the terminal `fd`, and outlives this object, which leaves its last line there.
    TerminalLine(std::ostream& out, int fd) : out_(out), fd_(fd) {}
    TerminalLine(const TerminalLine&) = delete;
    TerminalLine& operator=(const TerminalLine&) = delete;

    void show(const std::string& line);
    void clear();
    /// What stands there.
    [[nodiscard]] const std::string& shown() const { return shown_; }

private:
    std::ostream& out_;
    int fd_;
    std::string shown_;
};

}  // namespace VarnexTool
