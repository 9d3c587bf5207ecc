#include <Varnex/url/URLJavascript.h>

namespace Varnex {

const char* URLJavascript::mimeType() const {
    return "application/x-javascript";
}

const char* URLJavascript::scheme() const {
    return "javascript";
}

URLImpl* URLJavascript::createAbsolute(const std::string&, const std::string& rest) {
    return new URLJavascript(rest);
}

}  // namespace Varnex
