#include "Command.h"

#include "Quote.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <sstream>

namespace VarnexTool {

namespace {

class FixedHead : public CLI::Formatter {
public:
    FixedHead(const std::string& usage, const std::string& description)
        : usage_("Usage: " + usage + "\n"), description_(description) {}

    std::string make_usage(const CLI::App*, std::string) const override { return usage_; }
    std::string make_description(const CLI::App* app) const override {
        return description_.empty() ? Formatter::make_description(app) : description_ + "\n";
    }

private:
    std::string usage_;
    std::string description_;
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

CLI::Validator oneOf(const std::vector<std::string>& words) {
    std::string choice, list;
    for (const std::string& word : words) {
        choice += (choice.empty() ? "" : "|") + word;
        list += (list.empty() ? "" : word == words.back() ? " or " : ", ") + word;
    }
    const auto check = [words, list](std::string& text) -> std::string {
        if (std::find(words.begin(), words.end(), text) != words.end()) return {};
        return inQuotes(text) + " is not " + list;
    };
    return {check, choice};
}

void setHelpHead(CLI::App& app, const std::string& usage, const std::string& description) {
    app.formatter(std::make_shared<FixedHead>(usage, description));
}

}  // namespace VarnexTool
