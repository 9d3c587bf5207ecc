#pragma once

#include <string_view>

namespace Varnex {

// Private to the library: the one way to print. Everything goes to the sink of Diagnostics.h; `errno` stays as it is.

/// Prints one line on the error stream.
void printError(std::string_view line);

/// Prints the message of the exception that is being handled, whatever its class, as an ERROR line.
void printCaughtException();

/// Prints one line on the output stream.
void printOutput(std::string_view line);

/// Prints a text without a line end on the output stream.
void printOutputPart(std::string_view text);

}  // namespace Varnex
