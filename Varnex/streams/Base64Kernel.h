#pragma once

#include <cstddef>

namespace Varnex {

// Private to the library: the inner loops of Base64, over whole groups of 3 bytes and 4 characters.

struct Base64Kernel {
    /// Reads exactly 3 bytes and writes exactly 4 characters a group.
    void (*encode)(char* out, const unsigned char* in, std::size_t groups);

    /// Decodes up to the first group with a character outside of the alphabet; how many groups it decoded. May read all
    /// of the 4 and touch all of the 3 bytes of each of `groups`, also when it stops before.
    std::size_t (*decode)(unsigned char* out, const char* in, std::size_t groups);
};

extern const Base64Kernel portableBase64Kernel;

/// Null when this processor has no such instructions.
const Base64Kernel* vectorBase64Kernel();

/// The fastest one of this processor, chosen when the library is loaded; until then the portable one.
extern const Base64Kernel* base64Kernel;

}  // namespace Varnex
