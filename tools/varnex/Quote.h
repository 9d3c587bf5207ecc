#pragma once

#include <string>
#include <string_view>

namespace VarnexTool {

// Texts from outside on a terminal: UTF-8 stays readable; control characters, bytes that are no UTF-8 and characters
// that reverse the writing direction become visible as \n, \xNN or \u{N}.

/// Escapes those; nothing else changes.
[[nodiscard]] std::string escaped(std::string_view text);

/// In double quotes, with quotes and backslashes escaped too.
[[nodiscard]] std::string inQuotes(std::string_view text);

}  // namespace VarnexTool
