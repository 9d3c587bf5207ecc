#include "TransferStatus.h"

#include "BytesText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace VarnexTool {

namespace {

constexpr std::size_t kBarWidth = 16;

/// `part`: from 0 to 1; 100 % only when all is there.
std::string barText(double part) {
    const auto filled = static_cast<std::size_t>(part * kBarWidth);
    char percent[16];
    std::snprintf(percent, sizeof percent, "%3d %% ", static_cast<int>(part * 100));
    return percent + ("[" + std::string(filled, '#')) + std::string(kBarWidth - filled, ' ') + "] ";
}

/// 1:05, or 2:01:05 with hours.
std::string clockText(double time) {
    const long long seconds = std::llround(std::ceil(time));
    char text[48];
    if (seconds < 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld", seconds / 60, seconds % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
    return text;
}

}  // namespace

std::string TransferStatus::text() const {
    const auto done = static_cast<double>(bytes), whole = static_cast<double>(length);
    const std::string rateText = isStalled ? ", stalled" : ", " + bytesText(rate) + "/s";
    if (length < 0) return bytesText(done) + rateText;
    const double part = done < whole ? done / whole : 1;
    const std::string line = barText(part) + bytesText(done) + " of " + bytesText(whole) + rateText;
    const bool isMoving = rate > 0 && !isStalled;
    return isMoving ? line + ", " + clockText(std::max(0.0, whole - done) / rate) + " left" : line;
}

}  // namespace VarnexTool
