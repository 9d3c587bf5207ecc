#pragma once

namespace Varnex {

/// One piece of a gathered send. Points at the caller's bytes and owns nothing.
struct Chunk {
    const void* data = nullptr;
    int size = 0;  ///< bytes
};

}  // namespace Varnex
