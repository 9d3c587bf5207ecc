#pragma once

#include <stdexcept>

namespace VarnexTool {

/// What a command could not do, as one line for the user. Exit code 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the user typed wrong, as one line. Exit code 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace VarnexTool
