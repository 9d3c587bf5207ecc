#pragma once

#include <string>
#include <string_view>

namespace Varnex::UrlParts {

// Private to the library: what the schemes with paths have in common.

/// Percent-decoded; "%00" stays.
[[nodiscard]] std::string decoded(std::string text);
/// Decoded and in lower case: how hosts are compared.
[[nodiscard]] std::string comparableHost(std::string host);

/// As a URL keeps a path: "/" for each "\", and what is unsafe encoded.
void normalisePath(std::string& path);

/// Makes the path of a relative text that of the new URL.
void mergePath(std::string& path, const std::string& basePath);

/// What follows the last "/", decoded.
[[nodiscard]] std::string lastSegment(const std::string& path);
/// Up to the last "/" and with it.
[[nodiscard]] std::string directory(const std::string& path);

/// "#" and the fragment, or nothing.
[[nodiscard]] std::string withHash(const std::string& fragment);

/// A text without a scheme, taken apart.
struct Reference {
    bool hasAuthority, hasPath;
    std::string authority, path, fragment;
};

/// Throws "Parse error - query not allowed".
[[nodiscard]] Reference parseReference(const std::string& text);

/// Takes a query off `rest` and throws "Parse error - query not allowed" when there is one.
void refuseQuery(std::string& rest);

}  // namespace Varnex::UrlParts
