#include "Command.h"

#include "Quote.h"

#include <charconv>
#include <cstdlib>
#include <sstream>

namespace VarnexTool {

namespace {

class FixedUsage : public CLI::Formatter {
public:
    explicit FixedUsage(std::string usage) : usage_("Usage: " + std::move(usage) + "\n") {}

    std::string make_usage(const CLI::App*, std::string) const override { return usage_; }

private:
    std::string usage_;
};

std::string plain(double number) {
    std::ostringstream text;
    text.precision(15);
    text << number;
    return text.str();
}

}  // namespace

CLI::Validator numberFrom(double lowest, double highest) {
    const auto check = [lowest, highest](std::string& text) -> std::string {
        char* end = nullptr;
        const double number = std::strtod(text.c_str(), &end);
        if (!text.empty() && *end == '\0' && number >= lowest && number <= highest) return {};
        return inQuotes(text) + " is not a number from " + plain(lowest) + " to " + plain(highest);
    };
    return {check, ""};
}

CLI::Validator wholeNumberFrom(long long lowest, long long highest) {
    const auto check = [lowest, highest](std::string& text) -> std::string {
        long long number = 0;
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || stop != end || number < lowest || number > highest)
            return inQuotes(text) + " is not a whole number from " + std::to_string(lowest) + " to " +
                   std::to_string(highest);
        text = std::to_string(number);  // without leading zeros, which the conversion would take for octal
        return {};
    };
    return {check, ""};
}

void setUsage(CLI::App& app, const std::string& usage) {
    app.formatter(std::make_shared<FixedUsage>(usage));
}

}  // namespace VarnexTool
