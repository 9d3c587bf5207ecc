#include <Varnex/url/URLShaderHLSL.h>

#include <utility>

namespace Varnex {

URLShaderHLSL::URLShaderHLSL(std::string text) : URLDirect(std::move(text)) {}

URLShaderHLSL::~URLShaderHLSL() = default;

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
