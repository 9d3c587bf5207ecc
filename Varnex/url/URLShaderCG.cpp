#include <Varnex/url/URLShaderCG.h>

namespace Varnex {

const char* URLShaderCG::mimeType() const {
    return "application/x-shader-cg";
}

const char* URLShaderCG::scheme() const {
    return "cg";
}

URLImpl* URLShaderCG::createAbsolute(const std::string&, const std::string& rest) {
    return new URLShaderCG(rest);
}

}  // namespace Varnex
