#pragma once

#include <Varnex/Export.h>

#include <string>
#include <string_view>

namespace Varnex {

/// What `trim` removes. Line ends are kept.
inline constexpr std::string_view ws = " \t";

/// Removes the leading and trailing characters of `s` that are in `ws`.
VARNEX_API void trim(std::string& s);

}  // namespace Varnex
