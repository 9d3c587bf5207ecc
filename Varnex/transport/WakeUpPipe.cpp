#include <Varnex/transport/WakeUpPipe.h>

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace Varnex {

bool WakeUpPipe::open() {
    if (readEnd() >= 0) return true;
    const Zendro::MutexLock lock(mutex_);
    if (readEnd() >= 0) return true;
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return false;
    ownedReadEnd_ = UniqueFd(ends[0]);
    ownedWriteEnd_ = UniqueFd(ends[1]);
    writeEnd_.store(ends[1], std::memory_order_release);
    readEnd_.store(ends[0], std::memory_order_release);
    return true;
}

void WakeUpPipe::close() {
    const Zendro::MutexLock lock(mutex_);
    readEnd_.store(-1, std::memory_order_release);
    writeEnd_.store(-1, std::memory_order_release);
    ownedReadEnd_.close();
    ownedWriteEnd_.close();
}

bool WakeUpPipe::wake() {
    const int fd = writeEnd_.load(std::memory_order_acquire);
    if (fd < 0) return false;
    ssize_t written;
    do written = ::write(fd, "*", 1);
    while (written < 0 && errno == EINTR);
    return written == 1;
}

void WakeUpPipe::consume() {
    char byte;
    while (::read(readEnd(), &byte, 1) < 0 && errno == EINTR) {
    }
}

}  // namespace Varnex
