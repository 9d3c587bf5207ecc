#include <Varnex/url/UrlParts.h>

#include <Varnex/transport/LowerCase.h>
#include <Varnex/url/PercentCode.h>
#include <Varnex/url/URLImpl.h>

#include <algorithm>

namespace Varnex::UrlParts {

std::string decoded(std::string text) {
    percentDecode(text, kNoCharacters);
    return text;
}

std::string comparableHost(std::string host) {
    percentDecode(host, kNoCharacters);
    makeLowerCase(host);
    return host;
}

void normalisePath(std::string& path) {
    static constexpr CharacterSet kPlain(kUnreserved, kSpecialCharacters);
    std::replace(path.begin(), path.end(), '\\', '/');
    percentEncode(path, kPlain);
}

void mergePath(std::string& path, const std::string& basePath) {
    normalisePath(path);
    URLImpl::makePathAbsolute(path, basePath);
}

std::string lastSegment(const std::string& path) {
    return decoded(path.substr(path.rfind('/') + 1));
}

std::string directory(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

std::string withHash(const std::string& fragment) {
    return fragment.empty() ? "" : "#" + fragment;
}

Reference parseReference(const std::string& text) {
    Reference parts;
    std::string rest = text;
    parts.hasAuthority = URLImpl::parseAuthority(rest, parts.authority);
    parts.hasPath = URLImpl::parsePath(rest, parts.path);
    refuseQuery(rest);
    URLImpl::parseFragment(rest, parts.fragment);
    return parts;
}

void refuseQuery(std::string& rest) {
    std::string query;
    if (URLImpl::parseQuery(rest, query)) throw URLImpl::Exception("Parse error - query not allowed");
}

}  // namespace Varnex::UrlParts
