#include <Varnex/url/URLShaderCG.h>

#include <utility>

namespace Varnex {

URLShaderCG::URLShaderCG(std::string text) : URLDirect(std::move(text)) {}

URLShaderCG::~URLShaderCG() = default;

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
