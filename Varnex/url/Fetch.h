#pragma once

#include <Varnex/url/URLImpl.h>

#include <memory>
#include <streambuf>

namespace Varnex {

// Private to the library: what all schemes do to open a resource, and what `URLImpl::read2mem` and
// `URLImpl::read2disk` do once it is open.

/// The buffer, limited when the policy has a limit and the length is not known (-1). Throws when the length is over it.
[[nodiscard]] std::unique_ptr<std::streambuf> underPolicy(std::unique_ptr<std::streambuf> buffer,
                                                          long long contentLength);

[[nodiscard]] URLImpl::Memory readToMemory(URLImpl::Stream& stream);
[[nodiscard]] URLImpl::File readToDisk(URLImpl::Stream& stream);

}  // namespace Varnex
