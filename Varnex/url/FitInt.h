#pragma once

#include <limits>

namespace Varnex {

// Private to the library.

/// `size`, or -1, "unknown", when an int cannot hold it or it is negative.
constexpr int orUnknown(long long size) {
    return size < 0 || size > std::numeric_limits<int>::max() ? -1 : static_cast<int>(size);
}

}  // namespace Varnex
