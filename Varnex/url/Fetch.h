#pragma once

#include <Varnex/url/URLImpl.h>

namespace Varnex {

// Private to the library: what `URLImpl::read2mem` and `URLImpl::read2disk` do once the resource is open.

[[nodiscard]] URLImpl::Memory readToMemory(URLImpl::Stream& stream);
[[nodiscard]] URLImpl::File readToDisk(URLImpl::Stream& stream);

}  // namespace Varnex
