#pragma once

namespace Varnex {

// Private to the library: options of a connected stream socket. False, with `errno`, when the system refuses.

bool setSocketOption(int fd, int level, int name, int value);

/// 0: no limit.
bool setSendTimeLimit(int fd, int ms);

/// Idle time before the first probe; 0: never.
bool setKeepAliveTime(int fd, int seconds);

/// 0: the system's limit.
bool setUserTimeLimit(int fd, int ms);

}  // namespace Varnex
