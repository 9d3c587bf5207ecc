#include "EventFormat.h"

#include "EventTable.h"
#include "FieldText.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace VarnexTool {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kDim = "\033[2m";
constexpr const char* kBold = "\033[1m";
constexpr const char* kPlain = "\033[0m";

/// The time of day here, or date and time in UTC; microseconds.
std::string timeText(WallTime time, bool utc) {
    using namespace std::chrono;
    const auto micros = floor<microseconds>(time);
    const auto whole = floor<seconds>(micros);
    const std::time_t seconds = system_clock::to_time_t(whole);
    std::tm parts{};
    utc ? ::gmtime_r(&seconds, &parts) : ::localtime_r(&seconds, &parts);
    char text[40];
    const std::size_t size = std::strftime(text, sizeof text, utc ? "%Y-%m-%dT%H:%M:%S" : "%H:%M:%S", &parts);
    char fraction[32];
    std::snprintf(fraction, sizeof fraction, ".%06lld%s", static_cast<long long>((micros - whole).count()),
                  utc ? "Z" : "");
    return std::string(text, size) + fraction;
}

/// The decimal number that a person would write for this float: 0.1, not 0.10000000149011612.
Json toJson(float value) {
    return std::strtod(formatFloat(value).c_str(), nullptr);
}

Json toJson(const Points::value_type& point) {
    return {{"x", toJson(point.x)}, {"y", toJson(point.y)}, {"z", toJson(point.z)},
            {"w", toJson(point.w)}, {"id", point.id},       {"flags", point.flags}};
}

template <class Element>
Json toJson(const std::vector<Element>& elements) {
    Json array = Json::array();
    for (const Element& element : elements) array.push_back(toJson(element));
    return array;
}

template <class Plain>
Json toJson(const Plain& value) {
    return value;
}

Json fieldsAsJson(const Description& description, const Varnex::Event& event) {
    Json fields = Json::object();
    for (const Field& field : description.fields)
        fields[field.name] = std::visit([](const auto& value) { return toJson(value); }, field.get(event));
    return fields;
}

std::string jsonLine(const Varnex::Event& event, const std::string& peer, WallTime received) {
    const Description& description = describe(event);
    const Json object{
        {"time", timeText(received, true)}, {"peer", peer},          {"type", description.name},
        {"id", description.type->id},       {"tag", event.getTag()}, {"fields", fieldsAsJson(description, event)}};
    constexpr bool kAsciiOnly = true;
    return object.dump(-1, ' ', kAsciiOnly, Json::error_handler_t::replace);
}

}  // namespace

std::string EventFormat::line(const Varnex::Event& event, const std::string& peer, WallTime received) const {
    if (json) return jsonLine(event, peer, received);
    const auto styled = [this](const char* style, const std::string& text) {
        return colour ? style + text + kPlain : text;
    };
    const Description& description = describe(event);
    std::string line = styled(kDim, timeText(received, false) + " " + peer) + " " + styled(kBold, description.name);
    if (event.getTag() != 0) line += " tag=" + std::to_string(event.getTag());
    for (const Field& field : description.fields)
        line += " " + styled(kDim, field.name + "=") + formatValue(field.get(event));
    return line;
}

}  // namespace VarnexTool
