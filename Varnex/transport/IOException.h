#pragma once

#include <Varnex/transport/Exception.h>

#include <utility>

namespace Varnex {

/// Thrown when a system call on a socket, pipe or descriptor fails. Most of its texts end in the system's own text in
/// parentheses, such as "Cannot connect to server (Connection refused)".
class VARNEX_API IOException : public Exception {
public:
    explicit IOException(std::string message) : Exception(std::move(message)) {}
    /// `error`: the system's number, whose text the message ends in.
    IOException(const std::string& context, int error);
    IOException(const IOException&) = default;
    IOException& operator=(const IOException&) = default;
    ~IOException() override;

    /// The system's error number, 0 when the failure has none.
    [[nodiscard]] int getError() const { return error_; }

private:
    int error_ = 0;
};

}  // namespace Varnex
