#include <Varnex/url/NetworkURL.h>

#include <Varnex/url/URL.h>
#include <Varnex/url/UrlParts.h>

#include <utility>

namespace Varnex {

using namespace UrlParts;

namespace {

bool resolvesTo(const std::string& text, const URLImpl& base, const std::string& whole) try {
    const URL url(URLImpl::create(text, base));
    return url && url->toString() == whole;
} catch (const URLImpl::Exception&) {
    return false;
}

}  // namespace

NetworkURL::NetworkURL(Server server, std::string newPath, std::string newFragment)
    : URLImpl(std::move(newFragment)),
      user(std::move(server.user)),
      password(std::move(server.password)),
      host(std::move(server.host)),
      port(server.port),
      path(std::move(newPath)) {}

NetworkURL::~NetworkURL() = default;

bool NetworkURL::parseServer(const std::string& authority, int defaultPort, Server& server) {
    std::string rest = authority;
    parseUserPassword(rest, server.user, server.password);
    if (!parseHostPort(rest, server.host, server.port)) return false;
    if (server.host.empty()) throw Exception("Parse error - host is missing");
    if (server.port < 0) server.port = defaultPort;
    return true;
}

std::string NetworkURL::getAuthority() const {
    std::string text = user;
    if (!password.empty()) text += ":" + password;
    if (!text.empty()) text += "@";
    text += host;
    if (port != getDefaultPort()) text += ":" + std::to_string(port);
    return text;
}

std::string NetworkURL::toRelativeString(const URLImpl& base) const {
    const std::string whole = toString();
    const auto* const network = dynamic_cast<const NetworkURL*>(&base);
    if (network == nullptr) return whole;
    std::string way = path;
    makePathRelative(way, network->path);
    for (const std::string& start : {way, path, "//" + getAuthority() + path})
        if (const std::string text = start + getSuffix(); resolvesTo(text, base, whole)) return text;
    return whole;
}

std::string NetworkURL::getHost() const {
    return decoded(host);
}

int NetworkURL::getPort() const {
    return port;
}

std::string NetworkURL::getPath() const {
    return decoded(path);
}

std::string NetworkURL::getName() const {
    return lastSegment(path);
}

bool NetworkURL::refersToSameFileAs(const URLImpl& other) const {
    return refersToSameDomainAs(other) && getPath() == other.getPath();
}

bool NetworkURL::refersToSameDomainAs(const URLImpl& other) const {
    const auto* const network = dynamic_cast<const NetworkURL*>(&other);
    return network != nullptr && getScheme() == network->getScheme() && port == network->port &&
           comparableHost(host) == comparableHost(network->host);
}

}  // namespace Varnex
