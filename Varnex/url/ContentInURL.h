#pragma once

#include <Varnex/url/URLMemory.h>

#include <string>

namespace Varnex {

// Private to the library.

/// A record that points into `content`; throws when the policy refuses that size, or an int cannot hold it.
[[nodiscard]] URLImpl::Memory memoryOf(const std::string& content, std::string mimeType);

}  // namespace Varnex
