#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLDirect.h>

#include <string>

namespace Varnex {

/// "hlsl:" URLs: shader programs.
class VARNEX_API URLShaderHLSL : public URLDirect {
public:
    using URLDirect::URLDirect;

    [[nodiscard]] const char* mimeType() const override;
    [[nodiscard]] const char* scheme() const override;

    /// Never fails.
    [[nodiscard]] static URLImpl* createAbsolute(const std::string& scheme, const std::string& rest);

    static Protocol _shaderHLSLProtocol;
};

}  // namespace Varnex
