#include "PrintOptions.h"

#include "Command.h"

#include <Varnex/events/Event.h>

#include <unistd.h>

namespace VarnexTool {

void PrintOptions::addTo(CLI::App& app) {
    app.add_flag("--json", log.format.json, "Print one JSON object a line");
    app.add_option("--count", log.count, "End after this many events")
        ->transform(wholeNumberFrom(1, 1'000'000'000'000'000'000));
    addMaxLengthOption(app, maxLength);
    addSecondsOption(app, seconds);
    app.add_option("--color", colour, "Colour the lines")
        ->check(oneOf({"auto", "always", "never"}))
        ->capture_default_str();
    app.add_flag("--quiet", log.quiet, "Print no event lines");
    app.add_flag("--summary", log.summary,
                 "Print at the end the number and rate of events, and their latency where the value of an event is "
                 "the time of sending in nanoseconds since 1970");
}

EventLog::Options PrintOptions::use() const {
    Varnex::Event::setMaxLength(maxLength);
    EventLog::Options options = log;
    options.format.colour = colour == "always" || (colour == "auto" && ::isatty(STDOUT_FILENO) == 1);
    return options;
}

void addMaxLengthOption(CLI::App& app, unsigned int& bytes) {
    app.add_option("--max-length", bytes, "Drop a connection that sends a longer event, bytes; 0: no limit")
        ->transform(wholeNumberFrom(0, 2147483647))
        ->capture_default_str();
}

void addSecondsOption(CLI::App& app, double& seconds) {
    app.add_option("--seconds", seconds, "End after this time")->check(numberFrom(0.001, 1e9));
}

}  // namespace VarnexTool
