#pragma once

#include <Varnex/transport/Exception.h>

namespace Varnex {

/// Thrown when a system call on a socket, pipe or descriptor fails. Most of its texts end in the system's own text in
/// parentheses, such as "Cannot connect to server (Connection refused)".
class VARNEX_API IOException : public Exception {
public:
    using Exception::Exception;
    IOException(const IOException&) = default;
    IOException& operator=(const IOException&) = default;
    ~IOException() override;
};

}  // namespace Varnex
