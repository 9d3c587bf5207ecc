#pragma once

#include <string_view>

namespace Varnex {

// Private to the library.

/// The characters of a token, such as the name of a header line (RFC 9110, section 5.6.2).
inline constexpr std::string_view kTokenCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!#$%&'*+-.^_`|~";

}  // namespace Varnex
