#pragma once

#include <Varnex/Export.h>

#include <string>
#include <string_view>

namespace Varnex {

/// What `trim` removes. Line ends are kept.
inline constexpr std::string_view ws = " \t";

/// `text` without the leading and trailing characters that are in `blanks`.
[[nodiscard]] VARNEX_API std::string_view trimmed(std::string_view text, std::string_view blanks = ws);

/// Removes the leading and trailing characters of `s` that are in `ws`.
VARNEX_API void trim(std::string& s);

}  // namespace Varnex
