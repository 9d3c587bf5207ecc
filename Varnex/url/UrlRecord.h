#pragma once

#include <Varnex/url/QX_URLStreamHandler.h>

#include <string>

namespace Varnex {

// Private to the library.

/// A `QX_URL` with the texts that it owns.
class UrlRecord {
public:
    /// Only the scheme and the handler are set.
    UrlRecord(const std::string& scheme, QX_URLStreamHandler* handler);
    UrlRecord(UrlRecord&& other) noexcept;
    UrlRecord& operator=(UrlRecord&& other) = delete;
    ~UrlRecord();

    /// Has the handler, or `defaultParseURL`, fill the record of a new URL; false: it cannot.
    [[nodiscard]] bool parse(const std::string& text);

    /// Makes this the record for `text` relative to `base`; false: the handler cannot.
    [[nodiscard]] bool parseRelative(const UrlRecord& base, const std::string& text);

    [[nodiscard]] QX_URL* get() const { return &url_; }
    QX_URL* operator->() const { return &url_; }

private:
    mutable QX_URL url_{};  // the C interface knows no const
};

/// What parses for handlers that do not: splits `text` up to its NUL into `url`, whose old texts it replaces and does
/// not free. Always 0.
int defaultParseURL(QX_URL* url, const char* text, int start, int length);

}  // namespace Varnex
