#pragma once

#include <optional>
#include <string>

namespace Varnex {

// Private to the library.

/// What one serialised event is the state of, its type and handle: a newer event with the same key makes it obsolete.
/// Nothing when the bytes are not exactly one event of a registered class with a handle. Any thread.
std::optional<std::string> stateKeyOf(const void* data, int size);

}  // namespace Varnex
