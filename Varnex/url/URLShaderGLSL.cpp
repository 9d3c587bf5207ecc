#include <Varnex/url/URLShaderGLSL.h>

#include <utility>

namespace Varnex {

URLShaderGLSL::URLShaderGLSL(std::string text) : URLDirect(std::move(text)) {}

URLShaderGLSL::~URLShaderGLSL() = default;

const char* URLShaderGLSL::mimeType() const {
    return "application/x-shader-glsl";
}

const char* URLShaderGLSL::scheme() const {
    return "glsl";
}

URLImpl* URLShaderGLSL::createAbsolute(const std::string&, const std::string& rest) {
    return new URLShaderGLSL(rest);
}

}  // namespace Varnex
