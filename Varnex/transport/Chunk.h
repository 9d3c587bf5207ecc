#pragma once

namespace Varnex {

/// One piece of a gathered send. Points at the caller's bytes and owns nothing; they stay there until the send returns.
struct Chunk {
    const void* data = nullptr;
    int size = 0;  ///< bytes
};

}  // namespace Varnex
