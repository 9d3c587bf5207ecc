#pragma once

#include <Varnex/transport/Exception.h>

namespace Varnex {

/// Thrown when a system call on a socket, pipe or descriptor fails.
class VARNEX_API IOException : public Exception {
public:
    using Exception::Exception;
    IOException(const IOException&) = default;
    IOException& operator=(const IOException&) = default;
    ~IOException() override;
};

}  // namespace Varnex
