#pragma once

#include <Varnex/Export.h>
#include <Varnex/transport/Chunk.h>

namespace Varnex {

/// The sending half of a byte channel. One thread sends at a time unless a class says otherwise.
class VARNEX_API Sender {
public:
    Sender() = default;
    Sender(const Sender&) = delete;
    Sender& operator=(const Sender&) = delete;

    // The order of the virtual operations is binary interface: append, never reorder.
    virtual ~Sender();

    /// Closes the channel; true also when it was closed already.
    virtual bool close() = 0;

    /// Sends `n` bytes; on return `n` is how many were taken. False on failure, also after a part.
    virtual bool send(const void* data, int& n) = 0;

    /// Sends the chunks in order, by default with one `send` each; `sent` is the bytes taken in all. Stops, with true,
    /// after a chunk that was not taken whole; false when a `send` fails.
    virtual bool send(const Chunk* chunks, int count, int& sent);

    /// Whether each send reaches the receiver as a message of its own, by default not. Buffers then keep apart what
    /// they would otherwise send together.
    [[nodiscard]] virtual bool keepsMessages() const { return false; }
};

}  // namespace Varnex
