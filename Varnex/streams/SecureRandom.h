#pragma once

#include <Varnex/Export.h>

#include <cstddef>

namespace Varnex {

/// Fills `out` with `n` bytes that nobody can predict: for keys, masks and nonces. False when the system has none; the
/// bytes must then not be used. Any thread may call.
[[nodiscard]] VARNEX_API bool secureRandom(void* out, std::size_t n);

}  // namespace Varnex
