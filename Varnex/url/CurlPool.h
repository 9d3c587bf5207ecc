#pragma once

#include <Varnex/url/CurlHandles.h>

#include <cstddef>
#include <string>

namespace Varnex::CurlPool {

// Private to the library: connections that a finished loading leaves for the next one to the same server. Any thread.

/// Loadings whose connections are kept; one more and the oldest are closed.
inline constexpr std::size_t kMaxIdle = 8;

/// A handle with the connections to `server`, or a new one. Null: no memory.
[[nodiscard]] CurlMultiHandle take(const std::string& server);
void keep(const std::string& server, CurlMultiHandle handle);

}  // namespace Varnex::CurlPool
