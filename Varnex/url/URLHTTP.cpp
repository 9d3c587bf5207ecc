#include <Varnex/url/URLHTTP.h>

#include <Varnex/url/UrlParts.h>
#include <Varnex/url/openURL.h>

#include <utility>

namespace Varnex {

using namespace UrlParts;

URLHTTP::URLHTTP(std::string newUser, std::string newPassword, std::string newHost, int newPort, std::string newPath,
                 std::string query, bool https, std::string newFragment)
    : URLHTTP(Server{std::move(newUser), std::move(newPassword), std::move(newHost), newPort}, std::move(newPath),
              std::move(query), https, std::move(newFragment)) {}

URLHTTP::URLHTTP(Server server, std::string newPath, std::string query, bool https, std::string newFragment)
    : NetworkURL(std::move(server), std::move(newPath), std::move(newFragment)),
      query_(std::move(query)),
      https_(https) {}

URLHTTP::~URLHTTP() = default;

URLImpl* URLHTTP::createAbsolute(const std::string& scheme, const std::string& text) {
    const bool https = scheme == "https";
    std::string rest = text, authority, newPath, query, newFragment;
    if (!parseAuthority(rest, authority)) throw Exception("Parse error - missing authority");
    if (parsePath(rest, newPath))
        normalisePath(newPath);
    else
        newPath = "/";
    parseQuery(rest, query);
    parseFragment(rest, newFragment);
    Server server;
    if (!parseServer(authority, https ? kDefaultSecurePort : kDefaultPort, server))
        throw Exception("Parse error - invalid port");
    return new URLHTTP(std::move(server), std::move(newPath), std::move(query), https, std::move(newFragment));
}

URLHTTP* URLHTTP::createRelative(const std::string& text) const {
    std::string rest = text, authority, newPath, query, newFragment;
    const bool hasAuthority = parseAuthority(rest, authority);
    const bool hasPath = parsePath(rest, newPath);
    Server server = getServer();
    if (hasAuthority && !parseServer(authority, getDefaultPort(), server))
        throw Exception("Parse error - invalid port");
    if (hasPath)
        mergePath(newPath, path);
    else
        newPath = hasAuthority ? "/" : path;
    parseQuery(rest, query);
    parseFragment(rest, newFragment);
    return new URLHTTP(std::move(server), std::move(newPath), std::move(query), https_, std::move(newFragment));
}

std::string URLHTTP::getScheme() const {
    return https_ ? "https" : "http";
}

std::string URLHTTP::getSuffix() const {
    return (query_.empty() ? "" : "?" + query_) + withHash(fragment);
}

std::string URLHTTP::toString() const {
    return getScheme() + "://" + getAuthority() + path + getSuffix();
}

URLImpl::Stream* URLHTTP::open() const {
    checkPolicy();
    return openURL(toString(), path);
}

URLHTTP* URLHTTP::getBase() const {
    return new URLHTTP(getServer(), directory(path), "", https_, "");
}

}  // namespace Varnex
