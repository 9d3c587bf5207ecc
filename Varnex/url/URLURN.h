#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLImpl.h>

#include <string>

namespace Varnex {

class URL;

/// "urn:" URLs: names, which do not say where the resource is. `isURN` is for a program that knows that itself.
class VARNEX_API URLURN : public URLImpl {
public:
    /// `name`: what follows "urn:", as written.
    explicit URLURN(std::string name);
    ~URLURN() override;

    [[nodiscard]] std::string getScheme() const override;
    [[nodiscard]] std::string toString() const override;
    [[nodiscard]] std::string toRelativeString(const URLImpl& base) const override;
    /// Always throws.
    [[nodiscard]] Stream* open() const override;
    /// Always throws.
    [[nodiscard]] URLImpl* createRelative(const std::string& text) const override;
    [[nodiscard]] std::string getName() const override;

    /// Never fails.
    [[nodiscard]] static URLImpl* createAbsolute(const std::string& scheme, const std::string& rest);

    /// Whether `url` is a URN whose name begins with `prefix`, which is in lower case, such as "isbn:"; the name may be
    /// in any case. `rest` receives what follows, as written, or is emptied.
    static bool isURN(const URL& url, const std::string& prefix, std::string& rest);

    static Protocol urnProtocol;

private:
    std::string name_;
};

}  // namespace Varnex
