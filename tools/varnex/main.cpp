#include "Command.h"
#include "Failure.h"
#include "LibraryMessages.h"
#include "Quote.h"

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

int complainOfUsage(const CLI::App& app, const std::string& message) {
    const auto chosen = app.get_subcommands();
    const std::string command = chosen.empty() ? "varnex" : "varnex " + chosen.front()->get_name();
    const auto extras = app.remaining();
    const bool unknown = chosen.empty() && !extras.empty();
    return complain((unknown ? "unknown subcommand or option " + inQuotes(extras.front()) : message) + " (see " +
                        command + " --help)",
                    WrongUsage);
}

int runChosen(CLI::App& app, int argc, char** argv) {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(makeListenCommand(app));
    commands.push_back(makeSendCommand(app));
    commands.push_back(makeSimulateCommand(app));
    commands.push_back(makeTypesCommand(app));
    app.parse(argc, argv);
    for (const auto& command : commands)
        if (command->isChosen()) command->run();
    return finishOutput();
}

int guardedMain(int argc, char** argv) {
    CLI::App app("Sends, receives and shows typed events over TCP.", "varnex");
    app.set_version_flag("--version", "varnex " VARNEX_VERSION, "Print the version and exit");
    app.require_subcommand(1);
    try {
        return runChosen(app, argc, argv);
    } catch (const CLI::Success& request) {  // --help, --version
        app.exit(request);
        return finishOutput();
    } catch (const CLI::ParseError& error) {
        return complainOfUsage(app, error.what());
    } catch (const UsageError& error) {
        return complainOfUsage(app, error.what());
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
    } catch (const std::exception& error) {
        return complain(error.what(), Failed);
    }
}
