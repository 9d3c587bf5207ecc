#include "LoadArguments.h"

#include "Command.h"
#include "Failure.h"
#include "Quote.h"

#include <Varnex/streams/Trim.h>

#include <chrono>
#include <string_view>

namespace VarnexTool {

namespace {

constexpr double kLongest = 1e6;

std::string_view nameIn(std::string_view line) {
    return line.substr(0, line.find(':'));
}

/// False: it is no header line. Values are for the server only, so no message quotes them.
bool addLine(const std::string& line, Varnex::MessageHeader& header) {
    const std::string_view name = nameIn(line);
    return name.size() < line.size() &&
           header.setChecked(name, Varnex::trimmed(std::string_view(line).substr(name.size() + 1)));
}

std::string whyNoHeaderLine(const std::string& line) {
    Varnex::MessageHeader header;
    return addLine(line, header) ? "" : "is not of the form 'Name: value', in one line";
}

std::chrono::milliseconds milliseconds(double seconds) {
    return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

}  // namespace

void LoadArguments::addTo(CLI::App& app) {
    app.add_option("--header", header,
                   "Send this line to an HTTP server, also in place of a usual one; may be repeated")
        ->type_name("'NAME: VALUE'")
        ->allow_extra_args(false)
        ->check(CLI::Validator(whyNoHeaderLine, ""));
    app.add_option("--cacert", authorities, "Trust the certificate authorities in this PEM file, and no others")
        ->type_name("FILE")
        ->check(CLI::ExistingFile.description(""));
    app.add_option("--connect-timeout", connectSeconds, "Seconds to reach the server; 0: no limit")
        ->check(numberFrom(0, kLongest))
        ->capture_default_str();
    app.add_option("--stall-timeout", stallSeconds, "Seconds without a byte from the server; 0: no limit")
        ->check(numberFrom(0, kLongest))
        ->capture_default_str();
}

Varnex::LoadOptions LoadArguments::options() const {
    Varnex::LoadOptions options;
    options.authorities = authorities;
    options.connectTime = milliseconds(connectSeconds);
    options.stallTime = milliseconds(stallSeconds);
    for (const std::string& line : header) {
        const std::string name(nameIn(line));
        if (options.header.hasParam(name)) throw UsageError("--header: " + inQuotes(name) + " is given more than once");
        addLine(line, options.header);
    }
    return options;
}

}  // namespace VarnexTool
