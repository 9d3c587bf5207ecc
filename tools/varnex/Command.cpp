#include "Command.h"

#include "Quote.h"

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

void setUsage(CLI::App& app, const std::string& usage) {
    app.formatter(std::make_shared<FixedUsage>(usage));
}

}  // namespace VarnexTool
