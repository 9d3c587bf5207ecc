#include "LibraryMessages.h"

#include <Varnex/transport/Diagnostics.h>

#include <exception>
#include <string_view>
#include <utility>

namespace VarnexTool {

namespace {

constexpr std::string_view kPrefix = "ERROR: ";

thread_local std::string lastMessage;
thread_local bool isForwarder = false;
std::function<void(const std::string&)> forward;

/// Keeps failures; what the library merely tells, such as a growing buffer, is dropped.
void keep(Varnex::DiagnosticStream, std::string_view text) {
    if (!text.starts_with(kPrefix)) return;
    text.remove_prefix(kPrefix.size());
    if (text.ends_with('\n')) text.remove_suffix(1);
    try {
        lastMessage = text;
        if (forward && !isForwarder) forward(lastMessage);
    } catch (const std::exception&) {
        lastMessage.clear();
    }
}

}  // namespace

void collectLibraryMessages() {
    Varnex::setDiagnosticSink(&keep);
}

ForwardedMessages::ForwardedMessages(std::function<void(const std::string&)> note) {
    isForwarder = true;
    forward = std::move(note);
}

ForwardedMessages::~ForwardedMessages() {
    forward = nullptr;
    isForwarder = false;
}

std::string takeLibraryMessage() {
    return std::exchange(lastMessage, {});
}

std::string withLibraryMessage(const std::string& text) {
    const std::string message = takeLibraryMessage();
    return message.empty() ? text : text + ": " + message;
}

}  // namespace VarnexTool
