#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLDirect.h>

#include <string>

namespace Varnex {

/// "javascript:" and "vrmlscript:" URLs; both print as the former.
class VARNEX_API URLJavascript : public URLDirect {
public:
    using URLDirect::URLDirect;

    [[nodiscard]] const char* mimeType() const override;
    [[nodiscard]] const char* scheme() const override;

    /// Never fails.
    [[nodiscard]] static URLImpl* createAbsolute(const std::string& scheme, const std::string& rest);

    static Protocol _javascriptProtocol;
    static Protocol _vrmlscriptProtocol;
};

}  // namespace Varnex
