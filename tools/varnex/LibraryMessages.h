#pragma once

#include <string>

namespace VarnexTool {

/// From now on the library's own lines are kept instead of printed, so that the user sees one line per failure.
void collectLibraryMessages();

/// The last line that the library wrote in this thread, without "ERROR: ", and forgets it; empty when there is none.
[[nodiscard]] std::string takeLibraryMessage();

/// `text`, with ": " and the library's last line in this thread when there is one.
[[nodiscard]] std::string withLibraryMessage(const std::string& text);

}  // namespace VarnexTool
