#include <Varnex/web/WebStatistics.h>

#include <algorithm>

namespace Varnex {

namespace {

void add(WebStatistics::Counter& counter, std::uint64_t n) {
    counter.fetch_add(n, std::memory_order_relaxed);
}

}  // namespace

void WebStatistics::addReply(unsigned long code, std::uint64_t bytes, std::chrono::microseconds duration) {
    const auto spent = static_cast<std::uint64_t>(std::max<std::int64_t>(duration.count(), 0));
    const auto* const end = std::lower_bound(kDurationEnds.begin(), kDurationEnds.end(), spent);
    add(replies[std::min<std::size_t>(code / 100, replies.size() - 1)], 1);
    add(bytesSent, bytes);
    add(microseconds, spent);
    add(durations[static_cast<std::size_t>(end - kDurationEnds.begin())], 1);
}

}  // namespace Varnex
