#pragma once

#include <Varnex/url/URLImpl.h>
#include <Varnex/url/UrlRecord.h>

#include <string>

namespace Varnex {

// Private to the library.

/// A URL of a scheme that a program has registered through the C interface.
class URLStreamHandlerImpl : public URLImpl {
public:
    explicit URLStreamHandlerImpl(UrlRecord record);
    ~URLStreamHandlerImpl() override;

    [[nodiscard]] std::string getScheme() const override;
    [[nodiscard]] std::string toString() const override;
    /// The whole URL.
    [[nodiscard]] std::string toRelativeString(const URLImpl& base) const override;
    /// Throws with an empty message when the handler cannot.
    [[nodiscard]] Stream* open() const override;
    /// Null when the handler cannot parse it.
    [[nodiscard]] URLStreamHandlerImpl* createRelative(const std::string& text) const override;
    [[nodiscard]] std::string getName() const override;

private:
    [[nodiscard]] int getDefaultPort() const;
    [[nodiscard]] std::string printParts() const;

    UrlRecord url_;
};

}  // namespace Varnex
