#pragma once

#include <optional>
#include <string_view>

namespace Varnex::UrlGrammar {

// Private to the library: the steps of `URLImpl::parseURL` over views of one text, each with the same rules. Each takes
// a leading piece off `rest`; nothing: it is not there.

using Piece = std::optional<std::string_view>;

/// As written.
[[nodiscard]] Piece takeScheme(std::string_view& rest);
[[nodiscard]] Piece takeAuthority(std::string_view& rest);
/// May be empty.
[[nodiscard]] std::string_view takePath(std::string_view& rest);
[[nodiscard]] Piece takeQuery(std::string_view& rest);
[[nodiscard]] Piece takeFragment(std::string_view& rest);

struct UserPassword {
    std::string_view user, password;
};

/// Leaves the host and the port in `authority`.
[[nodiscard]] UserPassword takeUserPassword(std::string_view& authority);

struct HostPort {
    std::string_view host;
    int port = -1;
    bool isValid = true;
};

[[nodiscard]] HostPort splitHostPort(std::string_view hostport);

/// `text` without the white space around it, line ends included.
[[nodiscard]] std::string_view trimmed(std::string_view text);

}  // namespace Varnex::UrlGrammar
