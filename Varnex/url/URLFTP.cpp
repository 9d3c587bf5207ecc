#include <Varnex/url/URLFTP.h>

#include <Varnex/url/UrlParts.h>
#include <Varnex/url/openURL.h>

#include <string_view>
#include <utility>

namespace Varnex {

using namespace UrlParts;

namespace {

constexpr std::string_view kTypeMark = ";type=";

bool takeQuery(std::string& rest) {
    std::string query;
    return URLImpl::parseQuery(rest, query);
}

}  // namespace

URLFTP::URLFTP(std::string newUser, std::string newPassword, std::string newHost, int newPort, std::string newPath,
               char typeCode, std::string newFragment)
    : URLFTP(Server{std::move(newUser), std::move(newPassword), std::move(newHost), newPort}, std::move(newPath),
             typeCode, std::move(newFragment)) {}

URLFTP::URLFTP(Server server, std::string newPath, char typeCode, std::string newFragment)
    : NetworkURL(std::move(server), std::move(newPath), std::move(newFragment)), typeCode_(typeCode) {}

URLFTP::~URLFTP() = default;

bool URLFTP::parseTypeCode(std::string& text, char& typeCode) {
    const std::size_t size = kTypeMark.size() + 1;
    if (text.size() < size || text.compare(text.size() - size, kTypeMark.size(), kTypeMark) != 0) {
        typeCode = 0;
        return true;
    }
    if (text.back() != 'a' && text.back() != 'i') return false;
    typeCode = text.back();
    text.resize(text.size() - size);
    return true;
}

URLImpl* URLFTP::createAbsolute(const std::string&, const std::string& text) {
    std::string rest = text, authority, newPath, newFragment;
    if (!parseAuthority(rest, authority)) throw Exception("Parse error - missing authority");
    if (!parsePath(rest, newPath) || takeQuery(rest)) return nullptr;
    normalisePath(newPath);
    parseFragment(rest, newFragment);
    Server server;
    if (!parseServer(authority, kDefaultPort, server)) return nullptr;
    char typeCode = 0;
    parseTypeCode(newPath, typeCode);  // an unknown type stays in the path
    return new URLFTP(std::move(server), std::move(newPath), typeCode, std::move(newFragment));
}

URLFTP* URLFTP::createRelative(const std::string& text) const {
    std::string rest = text, authority, newPath, newFragment;
    const bool hasAuthority = parseAuthority(rest, authority);
    const bool hasPath = parsePath(rest, newPath);
    if (takeQuery(rest)) return nullptr;
    Server server = getServer();
    if (hasAuthority && !parseServer(authority, kDefaultPort, server)) return nullptr;
    char typeCode = hasAuthority ? '\0' : typeCode_;
    if (hasPath) {
        typeCode = 0;
        parseTypeCode(newPath, typeCode);
        mergePath(newPath, path);
    } else {
        newPath = hasAuthority ? "/" : path;
    }
    parseFragment(rest, newFragment);
    return new URLFTP(std::move(server), std::move(newPath), typeCode, std::move(newFragment));
}

std::string URLFTP::getScheme() const {
    return "ftp";
}

std::string URLFTP::getSuffix() const {
    return (typeCode_ == 0 ? "" : std::string(kTypeMark) + typeCode_) + withHash(fragment);
}

std::string URLFTP::toString() const {
    return "ftp://" + getAuthority() + path + getSuffix();
}

URLImpl::Stream* URLFTP::open() const {
    checkPolicy();
    return openURL(toString(), path);
}

URLFTP* URLFTP::getBase() const {
    return new URLFTP(getServer(), directory(path), '\0', "");
}

}  // namespace Varnex
