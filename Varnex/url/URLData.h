#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLImpl.h>

#include <string>

namespace Varnex {

/// "data:" URLs: a small resource in the text itself.
class VARNEX_API URLData : public URLImpl {
public:
    /// `data`: the bytes; `mimeType`: "text/plain" when empty; `base64`: how it prints.
    URLData(std::string data, std::string mimeType, bool base64);
    ~URLData() override;

    [[nodiscard]] std::string getScheme() const override;
    [[nodiscard]] std::string toString() const override;
    [[nodiscard]] std::string toRelativeString(const URLImpl& base) const override;
    [[nodiscard]] Stream* open() const override;
    /// Points into this object.
    [[nodiscard]] Memory read2mem() const override;
    /// Always throws.
    [[nodiscard]] URLImpl* createRelative(const std::string& text) const override;

    /// Throws "Invalid data URL" without a ",". What is no Base64 in such a URL is skipped; its first "=" ends it.
    [[nodiscard]] static URLImpl* createAbsolute(const std::string& scheme, const std::string& rest);

    static Protocol _dataProtocol;

private:
    std::string data_;
    std::string mimeType_;
    bool base64_;
};

}  // namespace Varnex
