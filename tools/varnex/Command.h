#pragma once

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace VarnexTool {

/// One subcommand: its constructor describes its options to the command line, `run` does the work.
class Command {
public:
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;

    /// Returns when the work is done or was ended by a signal. Throws `Failure` or `UsageError`.
    virtual void run() = 0;

    [[nodiscard]] bool isChosen() const { return app_->parsed(); }

protected:
    Command(CLI::App& parent, const std::string& name, const std::string& description)
        : app_(parent.add_subcommand(name, description)) {}

    [[nodiscard]] CLI::App& app() { return *app_; }

private:
    CLI::App* app_;  // owned by its parent
};

/// Accepts a number in this range, and says so in one plain sentence otherwise.
[[nodiscard]] CLI::Validator numberFrom(double lowest, double highest);

/// The same for a decimal whole number; for `transform`, because it also takes leading zeros away.
[[nodiscard]] CLI::Validator wholeNumberFrom(long long lowest, long long highest);

/// Accepts these words, at least two, and says which they are otherwise.
[[nodiscard]] CLI::Validator oneOf(const std::vector<std::string>& words);

/// Replaces the generated usage line of the help, and its first line when a description is given; the parent's list
/// keeps the old one.
void setHelpHead(CLI::App& app, const std::string& usage, const std::string& description = {});

// Each in a source file of its own. They add themselves to the command line.
std::unique_ptr<Command> makeDoctorCommand(CLI::App& parent);
std::unique_ptr<Command> makeGetCommand(CLI::App& parent);
std::unique_ptr<Command> makeHubCommand(CLI::App& parent);
std::unique_ptr<Command> makeListenCommand(CLI::App& parent);
std::unique_ptr<Command> makeSendCommand(CLI::App& parent);
std::unique_ptr<Command> makeSerialCommand(CLI::App& parent);
std::unique_ptr<Command> makeServeCommand(CLI::App& parent);
std::unique_ptr<Command> makeServersCommand(CLI::App& parent);
std::unique_ptr<Command> makeSimulateCommand(CLI::App& parent);
std::unique_ptr<Command> makeTypesCommand(CLI::App& parent);
std::unique_ptr<Command> makeUrlCommand(CLI::App& parent);
std::unique_ptr<Command> makeWatchCommand(CLI::App& parent);

}  // namespace VarnexTool
