#pragma once

#include <Varnex/url/URL.h>

#include <string>

namespace VarnexTool {

/// What `text` from the command line stands for; an empty `base`: the working directory. Throws `Failure`.
[[nodiscard]] Varnex::URL resolveUrl(const Varnex::URL& base, const std::string& text);

/// A URL in quotes for a message, shortened when it is long, with "***" in place of a password.
[[nodiscard]] std::string urlInQuotes(const std::string& text);

/// What the exception says, or `otherwise` when it says nothing.
[[nodiscard]] std::string wordsOf(const Varnex::URLImpl::Exception& error, const std::string& otherwise);

}  // namespace VarnexTool
