#pragma once

#include <cstddef>

namespace Varnex {

// Private to the library: the layout of an event's header, see docs/wire-format.md.

inline constexpr std::size_t kMagicSize = 4;
inline constexpr std::size_t kLengthOffset = 4;
inline constexpr std::size_t kTypeOffset = 8;

}  // namespace Varnex
