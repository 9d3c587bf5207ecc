#pragma once

#include <span>

#include <poll.h>

namespace Varnex {

// Private to the library: the one place that waits for descriptors.

/// Time limit of a wait without limit.
inline constexpr int kNoTimeLimit = -1;

/// Waits until at least one descriptor has one of its `events`, or for `ms` milliseconds (`kNoTimeLimit`: for ever).
///
/// Built on poll(2), with the verdicts that select(2) gives: the number of ready descriptors, 0 when the time ran out,
/// -1 with `errno` set on failure, which includes a negative `ms` other than `kNoTimeLimit` and a closed descriptor.
/// End of stream and a pending socket error count as ready. An interrupted wait goes on with the time that is left.
int pollDescriptors(std::span<pollfd> descriptors, int ms);

/// The same for one descriptor to read from.
int pollReadable(int fd, int ms);

/// Waits until either of two descriptors can be read; `wakeUp` tells whether the first of them can.
int pollReadable(int wakeUpFd, int fd, int ms, bool& wakeUp, bool& data);

/// The same for `us` microseconds without sleeping, letting other threads run in between.
int spinReadable(int wakeUpFd, int fd, int us, bool& wakeUp, bool& data);

}  // namespace Varnex
