#pragma once

#include <Varnex/Export.h>

#include <string_view>

namespace Varnex {

/// The standard stream that a diagnostic text belongs on.
enum class DiagnosticStream { Error, Output };

/// Takes every text that the library prints, line end included. Called from any thread, possibly from several at once;
/// it must not throw.
using DiagnosticSink = void (*)(DiagnosticStream stream, std::string_view text);

/// Replaces the sink for the whole process; null restores the default, which writes each text with one write to
/// `std::cerr` or `std::cout`. Returns the sink in force before, null for the default.
VARNEX_API DiagnosticSink setDiagnosticSink(DiagnosticSink sink);

/// Prints one line on the error stream; `errno` is as before on return.
void printError(std::string_view line);

/// Prints one line on the output stream.
void printOutput(std::string_view line);

/// Prints a text without a line end on the output stream.
void printOutputPart(std::string_view text);

}  // namespace Varnex
