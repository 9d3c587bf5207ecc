#include <Varnex/url/URLImpl.h>

#include <Varnex/transport/LowerCase.h>
#include <Varnex/url/PercentCode.h>
#include <Varnex/url/URLProtocol.h>
#include <Varnex/url/UrlGrammar.h>

#include <functional>
#include <string_view>
#include <utility>

namespace Varnex {

namespace {

void decodeScheme(std::string& scheme) {
    percentDecode(scheme, kNoCharacters);
    makeLowerCase(scheme);
}

/// Has `take(view of rest)` take a piece off, which `out` receives; whether there was one.
template <class Take>
bool step(std::string& rest, std::string& out, Take take) {
    std::string_view view = rest;
    const UrlGrammar::Piece piece = take(view);
    std::string text(piece.value_or(std::string_view()));
    rest.erase(0, rest.size() - view.size());
    out = std::move(text);
    return piece.has_value();
}

/// Most parts are empty, and that costs least so.
void assign(std::string& out, std::string_view part) {
    if (part.empty())
        out.clear();
    else
        out.assign(part);
}

/// Stores a piece and gives `flag` when there is one.
unsigned store(std::string& out, const UrlGrammar::Piece& piece, unsigned flag) {
    assign(out, piece.value_or(std::string_view()));
    return piece ? flag : 0;
}

bool isPartOf(const std::string& text, const URLImpl::Components& components) {
    const auto* const address = reinterpret_cast<const char*>(&text);
    const auto* const begin = reinterpret_cast<const char*>(&components);
    return std::greater_equal<>()(address, begin) && std::less<>()(address, begin + sizeof components);
}

}  // namespace

URLImpl::URLImpl(std::string newFragment) : fragment(std::move(newFragment)) {}

URLImpl::~URLImpl() = default;

std::string URLImpl::getHost() const {
    return {};
}

int URLImpl::getPort() const {
    return 0;
}

std::string URLImpl::getPath() const {
    return {};
}

std::string URLImpl::getName() const {
    return {};
}

URLImpl* URLImpl::getBase() const {
    return nullptr;
}

bool URLImpl::refersToSameFileAs(const URLImpl&) const {
    return false;
}

bool URLImpl::refersToSameDomainAs(const URLImpl&) const {
    return false;
}

URLImpl* URLImpl::create(const std::string& text, const URLImpl& base) {
    std::string rest(UrlGrammar::trimmed(text));
    if (rest.empty()) return nullptr;
    std::string scheme;
    if (!parseScheme(rest, scheme)) return base.createRelative(rest);
    const Protocol* const protocol = Protocol::find(scheme);
    return protocol == nullptr ? nullptr : protocol->createAbsolute(scheme, rest);
}

void URLImpl::parseURL(const std::string& text, Components& out) {
    if (isPartOf(text, out)) return parseURL(std::string(text), out);
    std::string_view rest = text;
    out.flags = store(out.scheme, UrlGrammar::takeScheme(rest), Components::Scheme);
    if (out.flags != 0) decodeScheme(out.scheme);

    const UrlGrammar::Piece found = UrlGrammar::takeAuthority(rest);
    if (found) out.flags |= Components::Authority;
    std::string_view authority = found.value_or(std::string_view());
    const UrlGrammar::UserPassword userPassword = UrlGrammar::takeUserPassword(authority);
    assign(out.user, userPassword.user);
    assign(out.password, userPassword.password);
    const UrlGrammar::HostPort hostPort = UrlGrammar::splitHostPort(authority);
    assign(out.host, hostPort.host);
    out.port = hostPort.port;

    assign(out.path, UrlGrammar::takePath(rest));
    if (!out.path.empty()) out.flags |= Components::Path;
    out.flags |= store(out.query, UrlGrammar::takeQuery(rest), Components::Query);
    out.flags |= store(out.fragment, UrlGrammar::takeFragment(rest), Components::Fragment);
}

bool URLImpl::parseScheme(std::string& rest, std::string& scheme) {
    const bool isFound = step(rest, scheme, UrlGrammar::takeScheme);
    decodeScheme(scheme);
    return isFound;
}

bool URLImpl::parseAuthority(std::string& rest, std::string& authority) {
    return step(rest, authority, UrlGrammar::takeAuthority);
}

bool URLImpl::parseUserPassword(std::string& authority, std::string& user, std::string& password) {
    std::string_view rest = authority;
    const UrlGrammar::UserPassword found = UrlGrammar::takeUserPassword(rest);
    user = found.user;
    password = found.password;
    authority.erase(0, authority.size() - rest.size());
    return true;
}

bool URLImpl::parseHostPort(std::string& hostport, std::string& host, int& port) {
    const UrlGrammar::HostPort found = UrlGrammar::splitHostPort(hostport);
    port = found.port;
    host = std::string(found.host);
    return found.isValid;
}

bool URLImpl::parsePath(std::string& rest, std::string& path) {
    step(rest, path, UrlGrammar::takePath);
    return !path.empty();
}

bool URLImpl::parseQuery(std::string& rest, std::string& query) {
    return step(rest, query, UrlGrammar::takeQuery);
}

bool URLImpl::parseFragment(std::string& rest, std::string& out) {
    return step(rest, out, UrlGrammar::takeFragment);
}

void URLImpl::encodeUnsafeCharacters(std::string& text) {
    percentEncode(text, kUnreserved);
}

void URLImpl::encodeUnsafeCharacters(std::string& text, const std::string& allowed) {
    percentEncode(text, CharacterSet(kUnreserved, allowed));
}

std::size_t URLImpl::decodeUnsafeCharacters(std::string& text, std::size_t end) {
    return percentDecode(text, kNoCharacters, end);
}

std::size_t URLImpl::decodeUnsafeCharacters(std::string& text, const std::string& keep, std::size_t end) {
    return percentDecode(text, CharacterSet(keep), end);
}

URLImpl::Exception::Exception(std::string message) : message_(std::move(message)) {}

URLImpl::Exception::~Exception() = default;

const char* URLImpl::Exception::what() const {
    return message_.c_str();
}

}  // namespace Varnex
