#include <Varnex/url/URLECMAscript.h>

#include <utility>

namespace Varnex {

URLECMAscript::URLECMAscript(std::string text) : URLDirect(std::move(text)) {}

URLECMAscript::~URLECMAscript() = default;

const char* URLECMAscript::mimeType() const {
    return "application/x-ecmascript";
}

const char* URLECMAscript::scheme() const {
    return "ecmascript";
}

URLImpl* URLECMAscript::createAbsolute(const std::string&, const std::string& rest) {
    return new URLECMAscript(rest);
}

}  // namespace Varnex
