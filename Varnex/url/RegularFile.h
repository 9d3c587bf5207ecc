#pragma once

#include <Varnex/transport/UniqueFd.h>

#include <string>

namespace Varnex {

// Private to the library.

/// A file that is open for reading.
struct RegularFile {
    UniqueFd fd;
    long long size = 0;  // bytes
};

/// Opens a regular file, and never waits for a FIFO. Anything else, and what the policy refuses, throws
/// `URLImpl::Exception` "Open error - cannot open file".
[[nodiscard]] RegularFile openRegularFile(const std::string& path);

}  // namespace Varnex
