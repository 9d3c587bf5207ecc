#include <Varnex/url/ResponseHead.h>

#include <Varnex/streams/Trim.h>

#include <sstream>
#include <utility>

namespace Varnex {

namespace {

constexpr unsigned long kFirstFinal = 200;
constexpr unsigned long kRedirects[] = {301, 302, 303, 307, 308};

bool isRedirect(const ProtocolHTTP::Reply& reply) {
    for (const unsigned long code : kRedirects)
        if (reply.code == code) return reply.header.hasParam("Location");
    return false;
}

}  // namespace

ResponseHead::State ResponseHead::add(std::string_view line) {
    const bool isFirst = std::exchange(isWhole_, false);
    if (isFirst) {
        if (!isInterim()) limits_ = {};  // those count together, so that they end
        text_.clear();
        reply_ = {};
    }
    text_.append(line);
    if (!isFirst && !limits_.count(line)) return State::Malformed;
    if (!isBlank(line, "\r\n")) return State::Incomplete;
    isWhole_ = true;
    std::istringstream stream(text_);
    return stream >> reply_ ? judge() : State::Malformed;
}

bool ResponseHead::isInterim() const {
    return reply_.code > 0 && reply_.code < kFirstFinal;
}

ResponseHead::State ResponseHead::judge() const {
    if (isInterim()) return State::Interim;
    return isRedirect(reply_) ? State::Redirect : State::Final;
}

std::string ResponseHead::getMimeType() const {
    const std::string type = reply_.header.getParam("Content-Type");
    return std::string(trimmed(std::string_view(type).substr(0, type.find(';'))));
}

}  // namespace Varnex
