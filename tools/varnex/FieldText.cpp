#include "FieldText.h"

#include "Failure.h"
#include "Quote.h"

#include <charconv>
#include <limits>
#include <string_view>

namespace VarnexTool {

namespace {

constexpr std::size_t kPointParts = 6;
constexpr int kShortDigits = 6;

[[noreturn]] void refuse(const Field& field, std::string_view text) {
    constexpr std::size_t kShown = 60;
    throw UsageError(field.optionName() + ": " + inQuotes(text.substr(0, kShown)) + " is not " + expectedForm(field));
}

template <class Number>
bool parseWhole(std::string_view text, Number& number, auto... base) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base...);
    return error == std::errc() && stop == end;
}

/// Decimal, or hexadecimal after "0x".
template <class Number>
bool parseInteger(std::string_view text, Number& number) {
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    if (hex && text.substr(2).starts_with('-')) return false;
    return hex ? parseWhole(text.substr(2), number, 16) : parseWhole(text, number, 10);
}

struct Range {
    std::int64_t lowest;
    std::int64_t highest;
};

template <class Low, class High = Low>
constexpr Range rangeOf() {
    return {std::numeric_limits<Low>::min(), std::numeric_limits<High>::max()};
}

Range rangeOf(Kind kind) {
    switch (kind) {
        case Kind::Int16:
            return rangeOf<std::int16_t>();
        case Kind::UInt16:
            return rangeOf<std::uint16_t>();
        case Kind::Bits32:
            return rangeOf<std::int32_t, std::uint32_t>();
        default:
            return rangeOf<std::int32_t>();
    }
}

std::vector<std::string_view> splitAtCommas(std::string_view text) {
    std::vector<std::string_view> parts;
    for (std::size_t comma; (comma = text.find(',')) != std::string_view::npos; text.remove_prefix(comma + 1))
        parts.push_back(text.substr(0, comma));
    parts.push_back(text);
    return parts;
}

bool parseFlag(std::string_view text, bool& flag) {
    flag = text.empty() || text == "true" || text == "1" || text == "yes" || text == "on";
    return flag || text == "false" || text == "0" || text == "no" || text == "off";
}

bool parseFloats(std::string_view text, std::vector<float>& values, std::size_t count) {
    const auto parts = splitAtCommas(text);
    if (parts.size() != count) return false;
    for (const std::string_view part : parts)
        if (!parseWhole(part, values.emplace_back())) return false;
    return true;
}

bool parsePoint(std::string_view text, Points& points) {
    const auto parts = splitAtCommas(text);
    if (parts.size() != kPointParts) return false;
    auto& [x, y, z, w, id, flags] = points.emplace_back();
    return parseWhole(parts[0], x) && parseWhole(parts[1], y) && parseWhole(parts[2], z) && parseWhole(parts[3], w) &&
           parseInteger(parts[4], id) && parseInteger(parts[5], flags);
}

/// Reads one text into `value`; points are appended to those that are there.
bool parseInto(const Field& field, const std::string& text, Value& value) {
    switch (field.kind) {
        case Kind::Flag:
            return parseFlag(text, value.emplace<bool>());
        case Kind::UInt64:
            return parseInteger(text, value.emplace<std::uint64_t>());
        case Kind::Text:
            value = text;
            return text.size() <= kMaxTextSize;
        case Kind::Floats:
            return parseFloats(text, value.emplace<std::vector<float>>(), field.count);
        case Kind::Points:
            if (!std::holds_alternative<Points>(value)) value.emplace<Points>();
            return parsePoint(text, std::get<Points>(value));
        default: {
            auto& number = value.emplace<std::int64_t>();
            const Range range = rangeOf(field.kind);
            return parseInteger(text, number) && number >= range.lowest && number <= range.highest;
        }
    }
}

std::string formatPoint(const Points::value_type& point) {
    const float floats[] = {point.x, point.y, point.z, point.w};
    std::string text = "(";
    for (const float value : floats) text += formatFloat(value, kShortDigits) + ",";
    return text + std::to_string(point.id) + "," + std::to_string(point.flags) + ")";
}

template <class Container, class Format>
std::string join(const Container& container, Format format) {
    std::string text;
    for (const auto& element : container) text += (text.empty() ? "" : ",") + format(element);
    return text;
}

struct Formatter {
    std::string operator()(bool flag) const { return flag ? "true" : "false"; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(std::uint64_t number) const { return std::to_string(number); }
    std::string operator()(const std::string& text) const { return inQuotes(text); }
    std::string operator()(const std::vector<float>& values) const {
        return join(values, [](float value) { return formatFloat(value, kShortDigits); });
    }
    std::string operator()(const Points& points) const { return '[' + join(points, formatPoint) + ']'; }
};

}  // namespace

Value parseField(const Field& field, const std::vector<std::string>& texts) {
    Value value;
    for (const std::string& text : texts)
        if (!parseInto(field, text, value)) refuse(field, text);
    return value;
}

std::string expectedForm(const Field& field) {
    switch (field.kind) {
        case Kind::Flag:
            return "true or false";
        case Kind::UInt64:
            return "a number from 0 to " + std::to_string(std::numeric_limits<std::uint64_t>::max());
        case Kind::Text:
            return "a text of at most " + std::to_string(kMaxTextSize) + " bytes";
        case Kind::Floats:
            return std::to_string(field.count) + " numbers, as in 1,2.5,-3e2" + (field.count == 4 ? ",0" : "");
        case Kind::Points:
            return "x,y,z,w,id,flags, as in 0.5,1,2,1,7,0";
        default: {
            const Range range = rangeOf(field.kind);
            return "a number from " + std::to_string(range.lowest) + " to " + std::to_string(range.highest);
        }
    }
}

std::string formatValue(const Value& value) {
    return std::visit(Formatter(), value);
}

std::string formatFloat(float value, int digits) {
    char text[64];
    const auto end = digits > 0 ? std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits)
                                : std::to_chars(text, text + sizeof text, value);
    return {text, end.ptr};
}

}  // namespace VarnexTool
