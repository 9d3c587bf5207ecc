#pragma once

#include <Varnex/Export.h>
#include <Varnex/transport/UniqueFd.h>

#include <utility>

namespace Varnex {

/// A piece of an open file that a reply sends as its body, a block at a time.
struct VARNEX_API FileBody {
    UniqueFd file;
    long long offset = 0;
    long long length = 0;  ///< bytes; the file may have become shorter by now

    /// Reads up to `n` of the next bytes. 0: that was all; -1: it failed, or the file ends before.
    [[nodiscard]] long read(char* s, unsigned long n);
};

}  // namespace Varnex
