#include <Varnex/web/WebPageMetrics.h>

#include <Varnex/web/WebStatistics.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <utility>

namespace Varnex {

namespace {

constexpr double kMicrosecond = 1e-6;

std::string number(double value) {
    std::array<char, 32> digits;
    return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr};
}

std::string head(const std::string& name, const std::string& type, const std::string& help) {
    return "# HELP " + name + " " + help + "\n# TYPE " + name + " " + type + "\n";
}

std::string single(const std::string& name, const std::string& type, const std::string& help,
                   const std::string& value) {
    return head(name, type, help) + name + " " + value + "\n";
}

std::string repliesText(const WebStatistics& statistics) {
    std::string text = head("varnex_http_replies_total", "counter", "Replies by the first digit of their code.");
    for (std::size_t i = 1; i < statistics.replies.size(); ++i)
        text += "varnex_http_replies_total{code=\"" + std::to_string(i) + "xx\"} " +
                std::to_string(statistics.replies[i].load()) + "\n";
    return text;
}

std::string durationsText(const WebStatistics& statistics) {
    const std::string name = "varnex_http_reply_seconds";
    std::string text = head(name, "histogram", "Time from a request to the end of its reply.");
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < statistics.durations.size(); ++i) {
        total += statistics.durations[i];
        const bool isLast = i == WebStatistics::kDurationEnds.size();
        const std::string end = isLast ? "+Inf" : number(WebStatistics::kDurationEnds[i] * kMicrosecond);
        text += name + "_bucket{le=\"" + end + "\"} " + std::to_string(total) + "\n";
    }
    text += name + "_sum " + number(static_cast<double>(statistics.microseconds.load()) * kMicrosecond) + "\n";
    return text + name + "_count " + std::to_string(total) + "\n";
}

std::uint64_t totalOf(const WebStatistics& statistics) {
    std::uint64_t total = 0;
    for (const auto& count : statistics.replies) total += count;
    return total;
}

}  // namespace

WebPageMetrics::WebPageMetrics(std::shared_ptr<const WebStatistics> statistics) : statistics_(std::move(statistics)) {}

WebPageMetrics::~WebPageMetrics() = default;

WebPageMetrics* WebPageMetrics::clone() const {
    return new WebPageMetrics(*this);
}

bool WebPageMetrics::create(const ProtocolHTTP::Request&, ProtocolHTTP::Reply& reply) {
    const WebStatistics& now = *statistics_;
    const std::chrono::duration<double> uptime = std::chrono::steady_clock::now() - begin_;
    const double rate = static_cast<double>(totalOf(now)) / std::max(uptime.count(), kMicrosecond);
    reply.code = 200;
    reply.header.setParam("Content-Type", "text/plain; version=0.0.4");
    reply.body =
        single("varnex_http_connections_total", "counter", "Connections.", std::to_string(now.accepted.load())) +
        single("varnex_http_connections", "gauge", "Connections now.", std::to_string(now.active.load())) +
        single("varnex_http_refused_total", "counter", "Requests that could not be read.",
               std::to_string(now.refused.load())) +
        single("varnex_http_body_bytes_total", "counter", "Bytes of bodies sent.",
               std::to_string(now.bytesSent.load())) +
        single("varnex_http_replies_per_second", "gauge", "Replies a second since the start.", number(rate)) +
        repliesText(now) + durationsText(now);
    return true;
}

}  // namespace Varnex
