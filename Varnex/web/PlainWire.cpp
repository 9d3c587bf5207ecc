#include <Varnex/web/PlainWire.h>

#include <Varnex/transport/Socket.h>

#include <cerrno>

#include <sys/socket.h>
#include <sys/time.h>

namespace Varnex {

namespace {

long outcomeOf(int error) {
    return error == EAGAIN || error == EWOULDBLOCK ? Wire::TimedOut : Wire::Failed;
}

}  // namespace

PlainWire::~PlainWire() = default;

/// The flags of a call that waits `ms` milliseconds.
int PlainWire::prepare(int option, int ms, int& current) const {
    if (ms == 0) return MSG_DONTWAIT;
    if (ms == current) return 0;
    const timeval limit = {ms < 0 ? 0 : ms / 1000, ms < 0 ? 0 : ms % 1000 * 1000};
    if (::setsockopt(fd_, SOL_SOCKET, option, &limit, sizeof limit) == 0) current = ms;
    return 0;
}

long PlainWire::receive(char* s, std::size_t n, int ms) {
    const int flags = prepare(SO_RCVTIMEO, ms, receiveMs_);
    ssize_t received;
    do received = ::recv(fd_, s, n, flags);
    while (received < 0 && errno == EINTR);
    if (received < 0 && errno == ECONNRESET) return 0;
    return received < 0 ? outcomeOf(errno) : received;
}

long PlainWire::send(const Chunk* chunks, int count, int ms) {
    const int flags = prepare(SO_SNDTIMEO, ms, sendMs_);
    if (count == 1) {
        const ssize_t taken = ::send(fd_, chunks->data, static_cast<std::size_t>(chunks->size), flags | MSG_NOSIGNAL);
        if (taken >= 0 || errno != EINTR) return taken < 0 ? outcomeOf(errno) : taken;
    }
    unsigned long sent = 0;
    const bool ok = Socket(fd_).sendto(const_cast<Chunk*>(chunks), count, &sent, flags, nullptr, 0);
    return ok ? static_cast<long>(sent) : outcomeOf(errno);
}

}  // namespace Varnex
