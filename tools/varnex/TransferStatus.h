#pragma once

#include <string>

namespace VarnexTool {

/// How far a transfer is, for the progress bar. A value.
struct TransferStatus {
    unsigned long long bytes = 0;
    long long length = -1;   ///< bytes of the whole; -1: not known
    double rate = 0;         ///< bytes a second
    bool isStalled = false;  ///< nothing has come for a while

    /// A line without its end, ASCII: percentage, bytes, rate and the time left, as far as they are known; "stalled"
    /// tells instead that there is no rate.
    [[nodiscard]] std::string text() const;
};

}  // namespace VarnexTool
