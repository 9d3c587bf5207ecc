#pragma once

#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/SystemError.h>

#include <cerrno>
#include <cstddef>

#include <sys/types.h>

namespace Varnex {

// Private to the library: what sending has in common, whatever it goes to.

/// Hands `n` bytes to `take(bytes, size)`, again for what it left, until all are taken or it takes none; on return `n`
/// is how many were taken. False, with an ERROR line, when `take` is negative with `errno` set.
template <typename Take>
bool sendAll(const void* data, int& n, Take take) {
    const auto* bytes = static_cast<const char*>(data);
    int sent = 0;
    while (sent < n) {
        const ssize_t taken = take(bytes + sent, static_cast<std::size_t>(n - sent));
        if (taken < 0) {
            printError(withErrno("ERROR: Cannot send", errno));
            n = sent;
            return false;
        }
        if (taken == 0) break;
        sent += static_cast<int>(taken);
    }
    n = sent;
    return true;
}

}  // namespace Varnex
