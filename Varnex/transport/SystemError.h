#pragma once

#include <string>
#include <string_view>

namespace Varnex {

// Private to the library: the one place that turns an error number into text. Any thread may call.

/// The system's text for `error`, such as "Connection refused".
std::string systemErrorText(int error);

/// `context` + " (" + the system's text + ")".
std::string withErrno(std::string_view context, int error);

}  // namespace Varnex
