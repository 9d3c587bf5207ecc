#include <Varnex/web/HtmlLog.h>

#include <Varnex/transport/LowerCase.h>
#include <Varnex/web/HtmlText.h>

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>

namespace Varnex {

namespace {

constexpr std::string_view kTable = "<P><TABLE CELLSPACING=0 CELLPADDING=0 BORDER=1 WIDTH=100%>\n";
constexpr std::string_view kTableEnd = "</TABLE></P>\n";
constexpr std::string_view kRowEnd = "</TD></TR>\n";

std::string versionText(const ProtocolHTTP::Version& version) {
    return htmlEscaped(version.name) + "/" + std::to_string(version.major) + "." + std::to_string(version.minor);
}

/// Passwords and sessions are nobody's to read.
bool isSecret(std::string name) {
    makeLowerCase(name);
    return name == "authorization" || name == "cookie" || name == "set-cookie" || name == "proxy-authorization";
}

std::string paramsText(std::span<const Plexa::ParamBag::Param> params, std::string_view between) {
    std::string text;
    for (const auto& [name, value] : params) {
        if (!text.empty()) text += "<BR>\n";
        text.append(htmlEscaped(name)).append(between).append(isSecret(name) ? "***" : htmlEscaped(value));
    }
    return text;
}

}  // namespace

void HtmlLog::setSize(int entries) {
    const Zendro::MutexLock lock(mutex_);
    ring_.assign(static_cast<std::size_t>(std::max(entries, 0)), {});
    next_ = count_ = 0;
    isOn_ = entries > 0;
}

void HtmlLog::add(std::string entry) {
    if (entry.size() > kMaxEntry) entry.resize(kMaxEntry);
    const Zendro::MutexLock lock(mutex_);
    if (ring_.empty()) return;
    ring_[next_] = std::move(entry);
    next_ = (next_ + 1) % ring_.size();
    count_ = std::min(count_ + 1, ring_.size());
}

void HtmlLog::addRequest(const std::string& peer, const ProtocolHTTP::Request& request) {
    std::string entry = "<P>Got request from " + peer + "</P>\n";
    entry.append(kTable);
    entry.append("<TR ><TH>Method</TH><TD WIDTH=100%>").append(htmlEscaped(request.method)).append(kRowEnd);
    entry.append("<TR><TH ALIGN=LEFT VALIGN=TOP>URL</TH><TD>").append(htmlEscaped(request.uri)).append(kRowEnd);
    entry.append("<TR><TH ALIGN=LEFT VALIGN=TOP>Query</TH><TD>");
    entry.append(paramsText(request.query.params(), "=")).append(kRowEnd);
    entry.append("<TR><TH ALIGN=LEFT VALIGN=TOP>Version</TH><TD>").append(versionText(request.version)).append(kRowEnd);
    entry.append("<TR><TH ALIGN=LEFT VALIGN=TOP>Header</TH><TD>");
    entry.append(paramsText(request.header.params(), ": ")).append(kRowEnd);
    add(std::move(entry.append(kTableEnd)));
}

void HtmlLog::addReply(const ProtocolHTTP::Reply& reply) {
    std::string entry = "<P>Reply</P>\n";
    entry.append(kTable);
    entry.append("<TR ><TH>Status</TH><TD WIDTH=100%>").append(versionText(reply.version)).append(" ");
    entry.append(std::to_string(reply.code)).append(" ").append(htmlEscaped(reply.phrase)).append(kRowEnd);
    entry.append("<TR><TH ALIGN=LEFT VALIGN=TOP>Header</TH><TD>");
    entry.append(paramsText(reply.header.params(), ": ")).append(kRowEnd);
    add(std::move(entry.append(kTableEnd)));
}

std::string HtmlLog::createPage() const {
    std::string page =
        "<HTML>\n  <HEAD>\n    <TITLE>WebServer Log</TITLE>\n  </HEAD>\n  <BODY>\n    <H1>WebServer Log</H1>\n";
    const Zendro::MutexLock lock(mutex_);
    for (std::size_t i = 0; i < count_; ++i) {
        if (i > 0) page += "\n<HR>\n\n";
        page += ring_[(next_ + ring_.size() - count_ + i) % ring_.size()];
    }
    return page + "  </BODY>\n</HTML>\n";
}

}  // namespace Varnex
