#include <Varnex/url/UrlGrammar.h>

#include <Varnex/streams/Trim.h>
#include <Varnex/url/CharacterSet.h>
#include <Varnex/url/PercentCode.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>
#include <system_error>

namespace Varnex::UrlGrammar {

namespace {

constexpr CharacterSet kSchemeEnd(":/?#"), kAuthorityEnd("/?#"), kPathEnd("?#"), kPortStart("]:");
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

std::string_view takeFront(std::string_view& rest, std::size_t n) {
    const std::string_view front = rest.substr(0, n);
    rest.remove_prefix(front.size());
    return front;
}

/// What strtol(3) makes of the text, limited to an int; whether that was the whole text.
bool toNumber(std::string_view text, int& number) {
    number = 0;
    if (text.empty()) return true;
    std::string_view digits = text;
    digits.remove_prefix(std::min(digits.find_first_not_of(kWhiteSpace), digits.size()));
    const bool hasPlus = digits.starts_with('+');
    if (hasPlus) digits.remove_prefix(1);
    if (hasPlus && digits.starts_with('-')) return false;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    if (error == std::errc::result_out_of_range)
        number = digits.front() == '-' ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    return error != std::errc::invalid_argument && stop == end;
}

}  // namespace

Piece takeScheme(std::string_view& rest) {
    const std::size_t end = kSchemeEnd.findIn(rest);
    if (end == 0 || end == rest.size() || rest[end] != ':') return {};
    const std::string_view scheme = takeFront(rest, end);
    rest.remove_prefix(1);
    return scheme;
}

Piece takeAuthority(std::string_view& rest) {
    if (!rest.starts_with("//")) return {};
    rest.remove_prefix(2);
    return takeFront(rest, kAuthorityEnd.findIn(rest));
}

std::string_view takePath(std::string_view& rest) {
    return takeFront(rest, kPathEnd.findIn(rest));
}

Piece takeQuery(std::string_view& rest) {
    if (!rest.starts_with('?')) return {};
    const std::size_t end = rest.find('#');
    const std::string_view query = rest.substr(1, end);  // one more than what is before the "#": wanted so
    takeFront(rest, end);
    return query;
}

Piece takeFragment(std::string_view& rest) {
    if (!rest.starts_with('#')) return {};
    rest.remove_prefix(1);
    return takeFront(rest, rest.size());
}

UserPassword takeUserPassword(std::string_view& authority) {
    const std::size_t end = authority.find('@');
    if (end == std::string_view::npos) return {};
    std::string_view password = takeFront(authority, end);
    authority.remove_prefix(1);
    const std::string_view user = takeFront(password, password.find(':'));
    if (!password.empty()) password.remove_prefix(1);
    return {user, password};
}

HostPort splitHostPort(std::string_view hostport) {
    std::size_t i = hostport.size();
    while (i > 0 && !kPortStart.contains(hostport[i - 1])) --i;
    if (i == 0 || hostport[i - 1] == ']') return {hostport};
    HostPort result{hostport.substr(0, i - 1)};
    const std::string_view port = hostport.substr(i);
    if (port.find('%') == std::string_view::npos) {
        result.isValid = toNumber(port, result.port);
    } else {
        std::string decoded(port);
        percentDecode(decoded, kNoCharacters);
        result.isValid = toNumber(decoded, result.port);
    }
    return result;
}

std::string_view trimmed(std::string_view text) {
    return Varnex::trimmed(text, " \t\r\n");
}

}  // namespace Varnex::UrlGrammar
