#include <Varnex/url/URLShaderGLSL.h>

namespace Varnex {

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
