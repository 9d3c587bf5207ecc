#pragma once

#include <Varnex/transport/UniqueFd.h>

#include <string>

namespace Varnex {

// Private to the library.

/// A page with links to what is in a folder but for names that begin with ".", at most `max` of them. `path`: what the
/// page is headed with. Empty: the folder cannot be read.
[[nodiscard]] std::string folderListing(const UniqueFd& folder, const std::string& path, unsigned max);

}  // namespace Varnex
