#pragma once

#include <functional>
#include <string>

namespace VarnexTool {

/// From now on the library's own lines are kept instead of printed, so that the user sees one line per failure.
void collectLibraryMessages();

/// The last line that the library wrote in this thread, without "ERROR: ", and forgets it; empty when there is none.
[[nodiscard]] std::string takeLibraryMessage();

/// `text`, with ": " and the library's last line in this thread when there is one.
[[nodiscard]] std::string withLibraryMessage(const std::string& text);

/// While it lives, what the library says in other threads than the one that made it goes to `note`. One at a time, made
/// before those threads and destroyed after them.
class ForwardedMessages {
public:
    explicit ForwardedMessages(std::function<void(const std::string&)> note);
    ~ForwardedMessages();
    ForwardedMessages(const ForwardedMessages&) = delete;
    ForwardedMessages& operator=(const ForwardedMessages&) = delete;
};

}  // namespace VarnexTool
