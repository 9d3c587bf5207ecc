#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/streams/Base64.h>
#include <Varnex/transport/LowerCase.h>

#include <string_view>

namespace Varnex {

namespace {

constexpr std::string_view kScheme = "basic ";
/// Characters of credentials that are looked at.
constexpr std::size_t kMaxCredentials = 65536;

bool hasBasicScheme(std::string_view value) {
    if (value.size() < kScheme.size() || value.size() > kMaxCredentials) return false;
    std::string scheme(value.substr(0, kScheme.size()));
    makeLowerCase(scheme);
    return scheme == kScheme;
}

bool decodeCredentials(const std::string& value, std::string& user, std::string& password) {
    if (!hasBasicScheme(value)) return false;
    const std::string_view coded = std::string_view(value).substr(kScheme.size());
    std::string text((coded.size() + 3) / 4 * 3, '\0');
    unsigned long size = text.size();
    if (decodeBase64(text.data(), size, coded, Base64Mode::Skip) != Base64Result::Decoded) return false;
    text.resize(size);
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) return false;
    user = text.substr(0, colon);
    password = text.substr(colon + 1);
    return true;
}

/// Takes the same time wherever the two differ.
bool isEqual(std::string_view given, std::string_view wanted) {
    unsigned difference = given.size() != wanted.size();
    for (std::size_t i = 0; i < given.size(); ++i)
        difference |= static_cast<unsigned>(given[i] ^ (wanted.empty() ? '\0' : wanted[i % wanted.size()]));
    return difference == 0;
}

}  // namespace

bool ProtocolHTTP::checkAuthorization(const MessageHeader& header, const std::string& user,
                                      const std::string& password) {
    if (user.empty() && password.empty()) return true;
    std::string givenUser, givenPassword;
    if (!decodeCredentials(header.getParam("Authorization"), givenUser, givenPassword)) return false;
    const bool isUser = isEqual(givenUser, user), isPassword = isEqual(givenPassword, password);
    return isUser && isPassword;
}

bool ProtocolHTTP::parseAuthorization(const MessageHeader& header, std::string& user, std::string& password) {
    return decodeCredentials(header.getParam("authorization"), user, password);
}

}  // namespace Varnex
