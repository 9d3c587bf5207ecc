#pragma once

namespace Varnex {

class Communicator;
class NonBlockingSender;

// Private to the library: what a hub asks of its connections beyond their interface.

/// Whether it is a datagram socket, buffered or not.
bool isDatagramChannel(Communicator* connection);

/// Whether a connection that can be received from has nothing but the end of its stream. An empty datagram is none.
bool isAtEnd(Communicator& connection);

/// The part of a connection, or of what it buffers, that sends without blocking; null when it has none.
NonBlockingSender* nonBlockingSenderOf(Communicator* connection);

}  // namespace Varnex
