#pragma once

namespace Varnex {

/// What a hub does with what a connection does not take at once.
struct SendPolicy {
    enum Mode {
        Block,  ///< the sender waits for each connection in turn
        Queue   ///< the message waits in a queue of the connection; one thread of the hub sends what waits
    };
    enum WhenFull {
        DropOldest,  ///< the message that has waited longest
        DropNewest,  ///< the new message
        KeepNewest,  ///< waiting events of which there is a newer one of the same type and handle, else the oldest
        Disconnect   ///< the connection: its queue is forgotten and both sides see the end
    };

    static constexpr int kDefaultMaxBytes = 4 << 20;
    static constexpr int kDefaultMaxMessages = 16384;

    Mode mode = Block;
    WhenFull whenFull = DropOldest;
    /// What may wait for one connection, 0: no limit. A message that is larger than `maxBytes` never fits.
    int maxBytes = kDefaultMaxBytes;
    int maxMessages = kDefaultMaxMessages;
};

}  // namespace Varnex
