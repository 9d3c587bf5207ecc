#pragma once

namespace Varnex {

/// Why a hub's connection is lost.
enum class LostReason {
    PeerClosed,     ///< the end of the stream was reached
    ReceiveFailed,  ///< it cannot be waited for: closed on this side, or broken
    SendFailed,     ///< the system refused a message of its queue
    QueueFull,      ///< by `SendPolicy::Disconnect`
    Dropped         ///< by `MultiCommunicator::dropCommunicator`
};

}  // namespace Varnex
