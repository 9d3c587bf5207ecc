#pragma once

#include <Varnex/Export.h>
#include <Varnex/transport/Chunk.h>

namespace Varnex {

/// What a communicator offers besides `send` so that one thread can serve many of them without waiting for any.
class VARNEX_API NonBlockingSender {
public:
    NonBlockingSender() = default;
    NonBlockingSender(const NonBlockingSender&) = delete;
    NonBlockingSender& operator=(const NonBlockingSender&) = delete;

    // The order of the virtual operations is binary interface: append, never reorder.
    virtual ~NonBlockingSender();

    /// Sends as much of the chunks as the system takes at once; `sent` is how many bytes that was, 0 when there is no
    /// room now. False, with an ERROR line, when the channel is closed or broken. For one thread, the only one that
    /// sends. A datagram channel takes each chunk as one datagram.
    virtual bool trySend(const Chunk* chunks, int count, int& sent) = 0;

    /// The descriptor to poll for room, -1 when closed.
    [[nodiscard]] virtual int getSendDescriptor() const = 0;

    /// Ends the channel, so that the reader on this side sees its end or a failing wait, and the other end, where
    /// the channel has one, too. For any thread while the channel is open; the owner still closes it.
    virtual void abort() = 0;
};

}  // namespace Varnex
