#include <Varnex/url/URL.h>

#include <Varnex/url/CharacterSet.h>

#include <cstddef>
#include <string>

#include <arpa/inet.h>

namespace Varnex {

namespace {

// RFC 3986, appendix A: one constant for each set of characters, one function for each rule.

#define VARNEX_LETTERS "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
#define VARNEX_DIGITS "0123456789"
#define VARNEX_PLAIN VARNEX_LETTERS VARNEX_DIGITS "-._~!$&'()*+,;="

constexpr CharacterSet kLetter(VARNEX_LETTERS), kDigit(VARNEX_DIGITS), kHexDigit(VARNEX_DIGITS "ABCDEFabcdef");
constexpr CharacterSet kSchemeCharacter(VARNEX_LETTERS VARNEX_DIGITS "+-.");
constexpr CharacterSet kHostCharacter(VARNEX_PLAIN), kUserCharacter(VARNEX_PLAIN ":");
constexpr CharacterSet kPathCharacter(VARNEX_PLAIN ":@/"), kQueryCharacter(VARNEX_PLAIN ":@/?");

#undef VARNEX_LETTERS
#undef VARNEX_DIGITS
#undef VARNEX_PLAIN

/// What stands before the first of `ends`, taken off `rest`.
std::string_view take(std::string_view& rest, std::string_view ends) {
    const std::string_view front = rest.substr(0, rest.find_first_of(ends));
    rest.remove_prefix(front.size());
    return front;
}

bool allOf(std::string_view text, const CharacterSet& set) {
    for (const char c : text)
        if (!set.contains(c)) return false;
    return true;
}

bool allOfOrEscapes(std::string_view text, const CharacterSet& set) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (set.contains(text[i])) continue;
        if (text[i] != '%' || text.size() - i < 3 || !allOf(text.substr(i + 1, 2), kHexDigit)) return false;
        i += 2;
    }
    return true;
}

bool isScheme(std::string_view text) {
    return !text.empty() && kLetter.contains(text[0]) && allOf(text, kSchemeCharacter);
}

bool isIpv6(std::string_view text) {
    unsigned char address[16];
    return ::inet_pton(AF_INET6, std::string(text).c_str(), address) == 1 && text.find('\0') == std::string_view::npos;
}

bool isFutureAddress(std::string_view text) {
    if (!text.starts_with('v') && !text.starts_with('V')) return false;
    const std::size_t dot = text.find('.');
    if (dot == std::string_view::npos || dot < 2 || dot + 1 == text.size()) return false;
    return allOf(text.substr(1, dot - 1), kHexDigit) && allOf(text.substr(dot + 1), kUserCharacter);
}

bool isHost(std::string_view text) {
    if (!text.starts_with('[')) return allOfOrEscapes(text, kHostCharacter);
    if (!text.ends_with(']')) return false;
    const std::string_view literal = text.substr(1, text.size() - 2);
    return isIpv6(literal) || isFutureAddress(literal);
}

bool isAuthority(std::string_view text) {
    const std::size_t at = text.find('@');
    if (at != std::string_view::npos) {
        if (!allOfOrEscapes(text.substr(0, at), kUserCharacter)) return false;
        text.remove_prefix(at + 1);
    }
    const std::size_t portStart = text.find_last_of("]:");
    if (portStart != std::string_view::npos && text[portStart] == ':') {
        if (!allOf(text.substr(portStart + 1), kDigit)) return false;
        text = text.substr(0, portStart);
    }
    return isHost(text);
}

/// `text` begins with a mark, or is empty.
bool isPart(std::string_view text, const CharacterSet& set) {
    return text.empty() || allOfOrEscapes(text.substr(1), set);
}

}  // namespace

bool URL::isWellFormed(std::string_view text) {
    std::string_view rest = text;
    const std::string_view scheme = take(rest, ":/?#");
    const bool hasScheme = rest.starts_with(':');
    if (hasScheme && !isScheme(scheme)) return false;
    if (hasScheme)
        rest.remove_prefix(1);
    else
        rest = text;
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        if (!isAuthority(take(rest, "/?#"))) return false;
    }
    return allOfOrEscapes(take(rest, "?#"), kPathCharacter) && isPart(take(rest, "#"), kQueryCharacter) &&
           isPart(rest, kQueryCharacter);
}

}  // namespace Varnex
