#include "Command.h"
#include "Failure.h"
#include "LibraryMessages.h"
#include "Quote.h"
#include "UrlArgument.h"

#include <Varnex/transport/Exception.h>

#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#ifndef VARNEX_VERSION
#define VARNEX_VERSION "(unknown version)"
#endif

namespace VarnexTool {

namespace {

enum ExitCode { Done = 0, Failed = 1, WrongUsage = 2 };

/// One line, whatever the message quotes from the command line.
int complain(const std::string& message, ExitCode code) {
    std::cerr << "varnex: " + escaped(message) + "\n" << std::flush;
    return code;
}

int finishOutput() {
    std::cout.flush();
    return std::cout ? Done : complain("cannot write to the standard output", Failed);
}

/// A descriptor of ours must not take the place of a standard stream that the caller closed; writing there still fails.
void occupyStandardStreams() {
    int fd = ::open("/dev/null", O_RDONLY);
    while (fd >= 0 && fd <= STDERR_FILENO) fd = ::dup(fd);
    if (fd >= 0) ::close(fd);
}

std::string optionIn(const std::string& message) {
    return message.substr(0, message.find(':'));
}

/// The help of the subcommand, or of the event type below it when the message begins with one of its options.
std::string helpFor(const CLI::App& app, const std::string& message) {
    std::string command = "varnex";
    const auto subcommands = app.get_subcommands();
    if (subcommands.empty()) return command + " --help";
    const CLI::App& chosen = *subcommands.front();
    command += " " + chosen.get_name();
    const auto types = chosen.get_subcommands();
    if (!types.empty() && types.front()->get_option_no_throw(optionIn(message)) != nullptr)
        command += " HOST:PORT " + types.front()->get_name();
    return command + " --help";
}

int complainOfUsage(const std::string& message, const std::string& help) {
    return complain(message + " (see " + help + ")", WrongUsage);
}

/// What the parser says, in words for its user.
std::string plainWords(const CLI::App& app, const CLI::ParseError& error) {
    std::string text = error.what();
    const auto extras = app.remaining(true);
    if (app.get_subcommands().empty() && !extras.empty())
        return "unknown subcommand or option " + inQuotes(extras.front());
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr && !extras.empty())
        return "unexpected argument " + inQuotes(extras.front());
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) == nullptr) return text;
    return optionIn(text) + (text.ends_with(" missing") ? ": the value is missing" : ": given more than once");
}

int runChosen(CLI::App& app, int argc, char** argv) {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(makeListenCommand(app));
    commands.push_back(makeSendCommand(app));
    commands.push_back(makeSimulateCommand(app));
    commands.push_back(makeHubCommand(app));
    commands.push_back(makeWatchCommand(app));
    commands.push_back(makeServersCommand(app));
    commands.push_back(makeSerialCommand(app));
    commands.push_back(makeDoctorCommand(app));
    commands.push_back(makeTypesCommand(app));
    commands.push_back(makeGetCommand(app));
    commands.push_back(makeUrlCommand(app));
    commands.push_back(makeServeCommand(app));
    app.parse(argc, argv);
    for (const auto& command : commands)
        if (command->isChosen()) command->run();
    return finishOutput();
}

int guardedMain(int argc, char** argv) {
    CLI::App app(
        "Sends, relays and shows typed events: over TCP, through hubs that are found by multicast, and over serial "
        "lines. Also opens URLs, and serves files to browsers.",
        "varnex");
    app.set_version_flag("--version", "varnex " VARNEX_VERSION, "Print the version and exit");
    app.require_subcommand(1);
    try {
        return runChosen(app, argc, argv);
    } catch (const CLI::Success& request) {  // --help, --version
        app.exit(request);
        return finishOutput();
    } catch (const CLI::ParseError& error) {
        const std::string message = plainWords(app, error);
        return complainOfUsage(message, helpFor(app, message));
    } catch (const UsageError& error) {
        return complainOfUsage(error.what(), error.help().empty() ? helpFor(app, error.what()) : error.help());
    }
}

}  // namespace

}  // namespace VarnexTool

int main(int argc, char** argv) {
    using namespace VarnexTool;
    occupyStandardStreams();
    collectLibraryMessages();
    try {
        return guardedMain(argc, argv);
    } catch (const Varnex::Exception& error) {
        return complain(error.what(), Failed);
    } catch (const Varnex::URLImpl::Exception& error) {
        return complain(wordsOf(error, "cannot read the URL"), Failed);
    } catch (const std::exception& error) {
        return complain(error.what(), Failed);
    }
}
