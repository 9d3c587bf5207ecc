#include <Varnex/transport/UniqueFd.h>

#include <cerrno>
#include <utility>

#include <unistd.h>

namespace Varnex {

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept {
    if (this != &other) {
        close();
        fd_ = other.release();
    }
    return *this;
}

UniqueFd::~UniqueFd() {
    close();
}

int UniqueFd::release() noexcept {
    return std::exchange(fd_, -1);
}

int UniqueFd::close() noexcept {
    const int fd = release();
    if (fd < 0) return 0;
    return ::close(fd) == 0 || errno == EINTR ? 0 : errno;
}

}  // namespace Varnex
