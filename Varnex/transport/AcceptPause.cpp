#include <Varnex/transport/AcceptPause.h>

#include <Varnex/transport/IOException.h>
#include <Varnex/transport/PrintLine.h>

#include <cerrno>
#include <string>
#include <utility>

namespace Varnex {

namespace {

/// The listening socket itself is gone. Anything else passes, or concerns one connection.
bool isFatal(int error) {
    return error == 0 || error == EBADF || error == EINVAL || error == ENOTSOCK;
}

}  // namespace

void AcceptPause::tell(std::string_view failure) {
    if (!std::exchange(isTold_, true)) printError("ERROR: " + std::string(failure));
}

bool AcceptPause::isPassing(const IOException& failure) {
    tell(failure.what());
    return !isFatal(failure.getError());
}

bool AcceptPause::pauseAfter(const IOException& failure) {
    return isPassing(failure) && pause_.wait(static_cast<int>(kPause.count()));
}

}  // namespace Varnex
