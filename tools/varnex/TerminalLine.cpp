#include "TerminalLine.h"

#include <ostream>
#include <utility>

#include <sys/ioctl.h>

namespace VarnexTool {

namespace {

/// What fits on one line of the terminal; a line that wraps could not be taken back.
std::string cutToTerminal(const std::string& line, int fd) {
    winsize size{};
    if (::ioctl(fd, TIOCGWINSZ, &size) != 0 || size.ws_col < 2) return line;
    return line.substr(0, size.ws_col - 1U);
}

}  // namespace

void TerminalLine::show(const std::string& line) {
    clear();
    shown_ = cutToTerminal(line, fd_);
    out_ << shown_ << std::flush;
}

void TerminalLine::clear() {
    if (!std::exchange(shown_, {}).empty()) out_ << "\r\033[K" << std::flush;
}

}  // namespace VarnexTool
