#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace VarnexTool {

/// What a command could not do, as one line for the user. Exit code 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the user typed wrong, as one line. Exit code 2.
class UsageError : public std::runtime_error {
public:
    /// `help`: the command that tells more; empty: the help of the chosen subcommand.
    explicit UsageError(const std::string& text, std::string help = {})
        : std::runtime_error(text), help_(std::move(help)) {}

    [[nodiscard]] const std::string& help() const { return help_; }

private:
    std::string help_;
};

}  // namespace VarnexTool
