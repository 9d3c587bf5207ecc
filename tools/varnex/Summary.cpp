#include "Summary.h"

#include "EventTable.h"
#include "Quote.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace VarnexTool {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kShownHandles = 16;

std::string fixed(double number, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, number);
    return text;
}

std::string microseconds(std::int64_t nanoseconds) {
    return fixed(static_cast<double>(nanoseconds) / 1e3, 1) + " us";
}

}  // namespace

void Summary::add(const Varnex::Event& event, WallTime received) {
    using namespace std::chrono;
    if (events_++ == 0) first_ = received;
    last_ = received;
    ++eventsByType_[describe(event).name];
    const auto* const handle = dynamic_cast<const Varnex::HandleEvent*>(&event);
    if (handle == nullptr) return;
    countHandle(handle->getHandle());
    const auto now = duration_cast<nanoseconds>(received.time_since_epoch()).count();
    const auto latency = static_cast<std::int64_t>(static_cast<std::uint64_t>(now) - handle->getValue());
    if (nanoseconds(latency) > kPlausible || nanoseconds(latency) < -kPlausible) return;
    if (latencies_.size() < kMaxLatencies)
        latencies_.push_back(latency);
    else
        latencies_[timeStamps_ % kMaxLatencies] = latency;
    ++timeStamps_;
}

void Summary::countHandle(const std::string& handle) {
    if (eventsByHandle_.size() < kMaxHandles || eventsByHandle_.contains(handle)) ++eventsByHandle_[handle];
}

/// Between the first event and the last.
double Summary::seconds() const {
    return std::chrono::duration<double>(last_ - first_).count();
}

double Summary::rate() const {
    return events_ > 1 && last_ > first_ ? static_cast<double>(events_ - 1) / seconds() : 0;
}

/// The smallest latency that `part` of them do not exceed.
std::int64_t Summary::latency(double part) const {
    std::vector<std::int64_t> sorted = latencies_;
    const auto rank = static_cast<std::size_t>(std::ceil(part * static_cast<double>(sorted.size())));
    const auto chosen = sorted.begin() + static_cast<std::ptrdiff_t>(std::max<std::size_t>(rank, 1) - 1);
    std::nth_element(sorted.begin(), chosen, sorted.end());
    return *chosen;
}

std::string Summary::text(bool json) const {
    if (json) {
        const auto latencyOrNull = [this](double part) { return latencies_.empty() ? Json() : Json(latency(part)); };
        Json object{{"events", events_},
                    {"seconds", seconds()},
                    {"rate", rate()},
                    {"types", eventsByType_},
                    {"handles", eventsByHandle_}};
        object["latencies"] = latencies_.size();
        object["latencyMedianNs"] = latencyOrNull(0.5);
        object["latency99Ns"] = latencyOrNull(0.99);
        return Json{{"summary", object}}.dump(-1, ' ', true, Json::error_handler_t::replace) + "\n";
    }
    std::string text = std::to_string(events_) + " events";
    if (rate() > 0) text += " in " + fixed(seconds(), 2) + " s, " + fixed(rate(), 1) + " a second";
    for (const auto& [type, count] : eventsByType_) text += "\n  " + std::to_string(count) + " " + type;
    if (eventsByHandle_.size() <= kShownHandles)
        for (const auto& [handle, count] : eventsByHandle_)
            text += "\n  " + std::to_string(count) + " of handle " + inQuotes(handle);
    if (!latencies_.empty())
        text += "\nlatency of " + std::to_string(latencies_.size()) + " time stamps: median " +
                microseconds(latency(0.5)) + ", 99th percentile " + microseconds(latency(0.99));
    return text + "\n";
}

}  // namespace VarnexTool
