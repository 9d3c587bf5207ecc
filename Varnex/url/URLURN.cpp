#include <Varnex/url/URLURN.h>

#include <Varnex/transport/LowerCase.h>
#include <Varnex/url/URL.h>

#include <utility>

namespace Varnex {

URLURN::URLURN(std::string name) : URLImpl(""), name_(std::move(name)) {}

URLURN::~URLURN() = default;

URLImpl* URLURN::createAbsolute(const std::string&, const std::string& rest) {
    return new URLURN(rest);
}

std::string URLURN::getScheme() const {
    return "urn";
}

std::string URLURN::toString() const {
    return "urn:" + name_;
}

std::string URLURN::toRelativeString(const URLImpl&) const {
    return toString();
}

URLImpl::Stream* URLURN::open() const {
    throw Exception("Cannot open URN");
}

URLImpl* URLURN::createRelative(const std::string&) const {
    throw Exception("Parse error - A URN cannot be a base for a relative URL");
}

std::string URLURN::getName() const {
    return name_;
}

bool URLURN::isURN(const URL& url, const std::string& prefix, std::string& rest) {
    rest.clear();
    if (!url || url->getScheme() != "urn") return false;
    std::string name = url->getName();
    decodeUnsafeCharacters(name, prefix.size());
    if (name.size() < prefix.size()) return false;
    for (std::size_t i = 0; i < prefix.size(); ++i)
        if (lowerCase(name[i]) != prefix[i]) return false;
    rest = name.substr(prefix.size());
    return true;
}

}  // namespace Varnex
