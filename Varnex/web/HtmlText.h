#pragma once

#include <string>
#include <string_view>

namespace Varnex {

// Private to the library.

/// `text` with & < > " ' as character references.
[[nodiscard]] std::string htmlEscaped(std::string_view text);

/// A page with nothing but a title, which is its heading, too.
[[nodiscard]] std::string htmlPage(std::string_view title);

}  // namespace Varnex
