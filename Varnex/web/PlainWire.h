#pragma once

#include <Varnex/web/Wire.h>

namespace Varnex {

// Private to the library.

/// Bytes as they are. Receiving waits inside recv(2), so that it costs one system call.
class PlainWire : public Wire {
public:
    /// The descriptor stays the caller's.
    explicit PlainWire(int fd) : fd_(fd) {}
    ~PlainWire() override;

    [[nodiscard]] long receive(char* s, std::size_t n, int ms) override;
    [[nodiscard]] long send(const Chunk* chunks, int count, int ms) override;

private:
    [[nodiscard]] int prepare(int option, int ms, int& current) const;

    int fd_;
    int receiveMs_ = -1;  // what the socket is set to
    int sendMs_ = -1;
};

}  // namespace Varnex
