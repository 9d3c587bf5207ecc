#pragma once

#include <Varnex/Export.h>

#include <string_view>

namespace Varnex {

/// The standard stream that a diagnostic text belongs on.
enum class DiagnosticStream { Error, Output };

/// Takes every text that the library prints: a line with its end, or a part of one. Called from any thread, possibly
/// from several at once; it must not throw.
using DiagnosticSink = void (*)(DiagnosticStream stream, std::string_view text);

/// Replaces the sink for the whole process; null restores the default, which writes each text with one write to
/// `std::cerr` or `std::cout`. Returns the sink in force before, null for the default.
VARNEX_API DiagnosticSink setDiagnosticSink(DiagnosticSink sink);

}  // namespace Varnex
