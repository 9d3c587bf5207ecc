#pragma once

namespace Varnex {

// Private to the library.

/// After a send that a signal interrupted before it took a byte: whether to call it again.
///
/// The system counts a socket's send time limit (SO_SNDTIMEO) anew from each call, so frequent signals would keep it
/// from ever passing. On a socket with a limit this waits, for that long at most, until the socket takes bytes again;
/// when it does not: false, with the `errno` of a send that timed out.
bool waitToSendAgain(int fd);

/// Waits until `fd` takes bytes, at most `ms` milliseconds, 0 without limit. False with `errno`: EAGAIN when the time
/// ran out, EIO when it will take none any more.
bool waitToWrite(int fd, int ms);

}  // namespace Varnex
