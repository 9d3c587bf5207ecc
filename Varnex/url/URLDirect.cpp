#include <Varnex/url/URLDirect.h>

#include <Varnex/url/ContentInURL.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLStream.h>

#include <sstream>
#include <utility>

namespace Varnex {

URLDirect::URLDirect(std::string text) : URLImpl(""), text_(std::move(text)) {}

URLDirect::~URLDirect() = default;

std::string URLDirect::getScheme() const {
    return scheme();
}

std::string URLDirect::toString() const {
    return std::string(scheme()) + ":" + text_;
}

std::string URLDirect::toRelativeString(const URLImpl&) const {
    return toString();
}

URLImpl::Stream* URLDirect::open() const {
    checkPolicy();
    return makeStream(std::make_unique<std::stringbuf>(text_, std::ios_base::in), mimeType(), std::ssize(text_));
}

URLImpl::Memory URLDirect::read2mem() const {
    checkPolicy();
    return memoryOf(text_, mimeType());
}

URLImpl* URLDirect::createRelative(const std::string&) const {
    throw Exception("Parse error - A direct URL cannot be a base for a relative URL");
}

}  // namespace Varnex
