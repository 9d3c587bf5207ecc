#include <Varnex/web/ReplyHead.h>

#include <algorithm>
#include <ctime>
#include <string_view>

namespace Varnex::ReplyHead {

namespace {

constexpr std::string_view kLineBreaks("\r\n\0", 3);

bool breaksLine(std::string_view text) {
    return text.find_first_of(kLineBreaks) != std::string_view::npos;
}

std::string neutral(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return kLineBreaks.find(c) != std::string_view::npos; }, ' ');
    return text;
}

}  // namespace

std::string quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < ' ' || c == 0x7F) continue;
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

std::string phraseOf(unsigned long code) {
    if (code == 431) return "Request Header Fields Too Large";
    return ProtocolHTTP::getStatusPhrase(code);
}

const std::string& date() {
    thread_local std::time_t second = 0;
    thread_local std::string text;
    const std::time_t now = std::time(nullptr);
    if (text.empty() || now != second) text = ProtocolHTTP::createTimestamp(now);
    second = now;
    return text;
}

void reset(ProtocolHTTP::Reply& reply) {
    reply.version.name = "HTTP";
    reply.version.major = reply.version.minor = 1;
    reply.code = 200;
    reply.phrase.clear();
    reply.header.clear();
    reply.body.clear();
}

void neutralise(ProtocolHTTP::Reply& reply) {
    if (breaksLine(reply.phrase)) reply.phrase = neutral(reply.phrase);
    const auto params = reply.header.params();
    const auto isBad = [](const auto& param) { return breaksLine(param.first) || breaksLine(param.second); };
    if (std::none_of(params.begin(), params.end(), isBad)) return;
    MessageHeader header;
    for (const auto& [name, value] : params) header.setParam(neutral(name), neutral(value));
    reply.header = std::move(header);
}

}  // namespace Varnex::ReplyHead
