#pragma once

#include "EventFormat.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace VarnexTool {

/// Counts events and measures how long they took from the time stamps in their `value`. One thread at a time.
class Summary {
public:
    /// Only the newest latencies are kept.
    static constexpr std::size_t kMaxLatencies = 1 << 16;
    /// More handles are not counted one by one.
    static constexpr std::size_t kMaxHandles = 1024;

    /// What lies further from the time of arrival than this is no time stamp.
    static constexpr std::chrono::hours kPlausible{1};

    void add(const Varnex::Event& event, WallTime received);

    [[nodiscard]] unsigned long long events() const { return events_; }

    /// Readable lines, or one JSON object on a line; with the line end. Latencies of other machines' events are as
    /// good as the two clocks.
    [[nodiscard]] std::string text(bool json) const;

private:
    void countHandle(const std::string& handle);
    [[nodiscard]] double seconds() const;
    [[nodiscard]] double rate() const;
    [[nodiscard]] std::int64_t latency(double part) const;

    unsigned long long events_ = 0;
    std::map<std::string, unsigned long long> eventsByType_;
    std::map<std::string, unsigned long long> eventsByHandle_;
    WallTime first_{};
    WallTime last_{};
    unsigned long long timeStamps_ = 0;
    std::vector<std::int64_t> latencies_;  // nanoseconds; a ring once full
};

}  // namespace VarnexTool
