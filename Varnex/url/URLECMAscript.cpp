#include <Varnex/url/URLECMAscript.h>

namespace Varnex {

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
