#include <Varnex/url/URLShaderHLSL.h>

namespace Varnex {

const char* URLShaderHLSL::mimeType() const {
    return "application/x-shader-hlsl";
}

const char* URLShaderHLSL::scheme() const {
    return "hlsl";
}

URLImpl* URLShaderHLSL::createAbsolute(const std::string&, const std::string& rest) {
    return new URLShaderHLSL(rest);
}

}  // namespace Varnex
