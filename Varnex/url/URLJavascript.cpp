#include <Varnex/url/URLJavascript.h>

#include <utility>

namespace Varnex {

URLJavascript::URLJavascript(std::string text) : URLDirect(std::move(text)) {}

URLJavascript::~URLJavascript() = default;

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
