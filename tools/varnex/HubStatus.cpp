#include "HubStatus.h"

#include "BytesText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace VarnexTool {

namespace {

std::string rateText(double rate) {
    return std::to_string(std::llround(rate)) + "/s";
}

bool isLessBehind(const HubStatus::Client& a, const HubStatus::Client& b) {
    return std::pair(a.dropped.messages, a.waiting.bytes) < std::pair(b.dropped.messages, b.waiting.bytes);
}

}  // namespace

std::string HubStatus::text() const {
    std::string line = "clients " + std::to_string(clients.size()) + ", in " + rateText(inRate) + ", out " +
                       rateText(outRate) + ", waiting " + bytesText(static_cast<double>(waitingBytes)) + ", dropped " +
                       std::to_string(dropped) + ", lost connections " + std::to_string(lost);
    const auto slowest = std::max_element(clients.begin(), clients.end(), isLessBehind);
    if (slowest == clients.end() || slowest->dropped.messages + slowest->waiting.messages == 0) return line;
    return line + "; slowest " + slowest->peer + ": waiting " + bytesText(static_cast<double>(slowest->waiting.bytes)) +
           ", dropped " + std::to_string(slowest->dropped.messages);
}

std::string HubStatus::json() const {
    using Json = nlohmann::ordered_json;
    Json list = Json::array();
    for (const Client& client : clients)
        list.push_back({{"peer", client.peer},
                        {"in", client.in},
                        {"out", client.sent.messages},
                        {"waiting", client.waiting.messages},
                        {"waitingBytes", client.waiting.bytes},
                        {"dropped", client.dropped.messages}});
    const Json object{
        {"inPerSecond", inRate}, {"outPerSecond", outRate}, {"waitingBytes", waitingBytes}, {"dropped", dropped},
        {"lost", lost},          {"clients", list}};
    return object.dump();
}

HubStatus HubMeter::take() {
    HubStatus status;
    Counters counters;
    unsigned long long sent = 0;
    for (const auto& each : hub_.getStatus()) {
        const auto& now = counters[each.number] = each.counters;
        const auto& before = lastCounters_[each.number];
        sent += now.sent.messages - before.sent.messages;
        dropped_ += now.dropped.messages - before.dropped.messages;
        status.waitingBytes += now.waiting.bytes;
        status.clients.push_back(
            {peers_.nameOf(each.connection), peers_.eventsOf(each.connection), now.sent, now.dropped, now.waiting});
    }
    lastCounters_ = std::move(counters);
    const auto time = Clock::now();
    const double seconds = std::max(1e-6, std::chrono::duration<double>(time - std::exchange(last_, time)).count());
    const auto events = peers_.events();
    status.inRate = static_cast<double>(events - std::exchange(lastEvents_, events)) / seconds;
    status.outRate = static_cast<double>(sent) / seconds;
    status.dropped = dropped_;
    status.lost = peers_.dropped();
    return status;
}

}  // namespace VarnexTool
