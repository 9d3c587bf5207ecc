#pragma once

#include <Varnex/transport/Chunk.h>

#include <cstddef>

namespace Varnex {

// Private to the library.

/// How bytes cross one of a web server's connections: plainly, or encrypted. One thread at a time.
class Wire {
public:
    /// Instead of a number of bytes.
    enum Outcome : long { TimedOut = -1, Failed = -2 };

    Wire() = default;
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;
    virtual ~Wire();

    /// Receives what is there, waiting for it at most `ms` milliseconds: 0 not at all, -1 without limit. 0 at the end.
    [[nodiscard]] virtual long receive(char* s, std::size_t n, int ms) = 0;
    /// Sends as much as it takes, waiting for room as above.
    [[nodiscard]] virtual long send(const Chunk* chunks, int count, int ms) = 0;
    /// Whether there are received bytes that no wait for the descriptor tells of.
    [[nodiscard]] virtual bool hasPending() const { return false; }
    /// Says farewell, where that is the custom, without waiting.
    virtual void finish() {}
};

}  // namespace Varnex
