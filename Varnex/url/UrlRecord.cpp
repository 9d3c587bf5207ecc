#include <Varnex/url/UrlRecord.h>

#include <Varnex/url/CText.h>
#include <Varnex/url/URLImpl.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

namespace Varnex {

namespace {

constexpr std::size_t kFieldOffsets[] = {
    offsetof(QX_URL, scheme), offsetof(QX_URL, userInfo), offsetof(QX_URL, host),     offsetof(QX_URL, port),
    offsetof(QX_URL, path),   offsetof(QX_URL, query),    offsetof(QX_URL, fragment), offsetof(QX_URL, handler)};
static_assert(std::is_sorted(std::begin(kFieldOffsets), std::end(kFieldOffsets)), "programs rely on the order");

/// What a handler fills; the scheme is not among them.
constexpr char* QX_URL::*kParts[] = {&QX_URL::userInfo, &QX_URL::host, &QX_URL::path, &QX_URL::query,
                                     &QX_URL::fragment};

/// The record that a handler gets to fill: a copy that shares its parts with the original until they are replaced, with
/// a scheme of its own.
class Draft {
public:
    explicit Draft(const QX_URL& original) : original_(original), url_(original), scheme_(copyOf(original.scheme)) {
        url_.scheme = scheme_.get();
    }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;
    ~Draft() {
        for (const auto part : kParts)
            if (!isShared(url_.*part)) std::free(url_.*part);
        if (url_.scheme != scheme_.get()) std::free(url_.scheme);
    }

    [[nodiscard]] bool fill(const std::string& text) {
        const auto parse = original_.handler->parseURL == nullptr ? &defaultParseURL : original_.handler->parseURL;
        const auto length = std::min<std::size_t>(text.size(), std::numeric_limits<int>::max());
        return parse(&url_, text.c_str(), 0, static_cast<int>(length)) == 0;
    }

    /// The parts that are new go to `target`, those that are shared as copies.
    void moveTo(QX_URL& target) {
        for (const auto part : kParts) {
            if (!isShared(url_.*part))
                target.*part = std::exchange(url_.*part, nullptr);
            else if (url_.*part != nullptr)
                target.*part = copyOf(url_.*part).release();
        }
        target.port = url_.port;
    }

private:
    /// Whether it belongs to the original, in whichever part it is now.
    [[nodiscard]] bool isShared(const char* text) const {
        return std::any_of(std::begin(kParts), std::end(kParts), [&](auto part) { return original_.*part == text; });
    }

    const QX_URL& original_;
    QX_URL url_;
    CText scheme_;
};

}  // namespace

UrlRecord::UrlRecord(const std::string& scheme, QX_URLStreamHandler* handler) {
    url_.scheme = copyOf(scheme.c_str()).release();
    url_.port = -1;
    url_.handler = handler;
}

UrlRecord::UrlRecord(UrlRecord&& other) noexcept : url_(std::exchange(other.url_, {})) {}

UrlRecord::~UrlRecord() {
    std::free(url_.scheme);
    for (const auto part : kParts) std::free(url_.*part);
}

bool UrlRecord::parse(const std::string& text) {
    const QX_URL empty = url_;
    Draft draft(empty);
    if (!draft.fill(text)) return false;
    draft.moveTo(url_);
    return true;
}

bool UrlRecord::parseRelative(const UrlRecord& base, const std::string& text) {
    Draft draft(base.url_);
    if (!draft.fill(text)) return false;
    draft.moveTo(url_);
    return true;
}

int defaultParseURL(QX_URL* url, const char* text, int, int) {
    URLImpl::Components parts;
    URLImpl::parseURL(text, parts);
    if ((parts.flags & URLImpl::Components::Authority) != 0) {
        const auto defaultPort = url->handler->getDefaultPort;
        url->host = copyOrNull(parts.host).release();
        url->port = parts.port < 0 && defaultPort != nullptr ? defaultPort() : parts.port;
        url->userInfo = copyOf((parts.user + (parts.password.empty() ? "" : ":" + parts.password)).c_str()).release();
    } else {
        URLImpl::makePathAbsolute(parts.path, orEmpty(url->path));
    }
    url->path = copyOrNull(parts.path).release();
    url->query = copyOrNull(parts.query).release();
    url->fragment = copyOrNull(parts.fragment).release();
    return 0;
}

}  // namespace Varnex
