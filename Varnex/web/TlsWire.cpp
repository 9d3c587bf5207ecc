#include <Varnex/web/TlsWire.h>

#include <Varnex/transport/PollReadable.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <openssl/err.h>
#include <openssl/ssl.h>

namespace Varnex {

namespace {

using Clock = std::chrono::steady_clock;

/// How much of `ms` is left.
int remaining(Clock::time_point begin, int ms) {
    if (ms < 0) return ms;
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
    return static_cast<int>(std::max<long>(0, ms - passed));
}

}  // namespace

void TlsWire::Deleter::operator()(ssl_st* ssl) const {
    SSL_free(ssl);
}

TlsWire::TlsWire(ssl_st* ssl, int fd) : ssl_(ssl), fd_(fd) {
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    SSL_set_fd(ssl, fd);
    SSL_set_accept_state(ssl);
}

TlsWire::~TlsWire() = default;

bool TlsWire::hasPending() const {
    return SSL_pending(ssl_.get()) > 0;
}

void TlsWire::finish() {
    if (isBroken_ || SSL_in_init(ssl_.get()) != 0) return;
    SSL_shutdown(ssl_.get());
    ERR_clear_error();
}

/// Has `call` done, waiting for what it waits for.
template <class Call>
long TlsWire::repeat(int ms, Call call) {
    if (isBroken_) return Failed;
    const Clock::time_point begin = ms > 0 ? Clock::now() : Clock::time_point();
    for (;;) {
        ERR_clear_error();
        errno = 0;
        const int n = call();
        if (n > 0) return n;
        const int reason = SSL_get_error(ssl_.get(), n);
        if (reason == SSL_ERROR_ZERO_RETURN) return 0;
        const bool wantsRead = reason == SSL_ERROR_WANT_READ;
        if (!wantsRead && reason != SSL_ERROR_WANT_WRITE) break;
        const int left = ms == 0 ? 0 : remaining(begin, ms);
        if (left == 0) return TimedOut;
        pollfd descriptor{fd_, static_cast<short>(wantsRead ? POLLIN : POLLOUT), 0};
        if (pollDescriptors({&descriptor, 1}, left) == 0) return TimedOut;
    }
    isBroken_ = true;
    const bool isReset = errno == ECONNRESET || errno == 0;
    ERR_clear_error();
    return isReset ? 0L : static_cast<long>(Failed);
}

long TlsWire::receive(char* s, std::size_t n, int ms) {
    return repeat(ms, [&] { return SSL_read(ssl_.get(), s, static_cast<int>(n)); });
}

long TlsWire::send(const Chunk* chunks, int count, int ms) {
    const auto* const first = std::find_if(chunks, chunks + count, [](const Chunk& chunk) { return chunk.size > 0; });
    if (first == chunks + count) return 0;
    const long sent = repeat(ms, [&] { return SSL_write(ssl_.get(), first->data, first->size); });
    return sent == 0 ? static_cast<long>(Failed) : sent;
}

}  // namespace Varnex
