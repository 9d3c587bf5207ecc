#include <Varnex/transport/NetCommunicator.h>

#include <Varnex/transport/Diagnostics.h>
#include <Varnex/transport/PollReadable.h>
#include <Varnex/transport/RemainingChunks.h>
#include <Varnex/transport/SendAgain.h>
#include <Varnex/transport/Socket.h>
#include <Varnex/transport/SystemError.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace Varnex {

NetCommunicator::NetCommunicator() = default;

NetCommunicator::~NetCommunicator() = default;

bool NetCommunicator::close() {
    const int error = descriptor_.close();
    if (error == 0) return true;
    printError(withErrno("ERROR: While closing", error) + "!");
    return false;
}

bool NetCommunicator::send(const void* data, int& n) {
    if (!isOpen() || data == nullptr || n < 0) return false;
    const auto* bytes = static_cast<const char*>(data);
    int sent = 0;
    while (sent < n) {
        const auto taken =
            ::send(descriptor_.get(), bytes + sent, static_cast<std::size_t>(n - sent), sendFlags_ | MSG_NOSIGNAL);
        if (taken < 0 && errno == EINTR && maySendAgain(descriptor_.get())) continue;
        if (taken < 0) {
            printError(withErrno("ERROR: Cannot send", errno));
            n = sent;
            return false;
        }
        if (taken == 0) break;
        sent += static_cast<int>(taken);
    }
    n = sent;
    return true;
}

bool NetCommunicator::send(const Chunk* chunks, int count, int& sent) {
    sent = 0;
    if (!isOpen()) return false;
    Socket socket(descriptor_.get());
    RemainingChunks rest(chunks, count);
    while (!rest.empty()) {
        unsigned long taken = 0;
        if (!socket.sendto(rest.data(), rest.count(), &taken, sendFlags_, nullptr, 0) || taken == 0) return false;
        sent = static_cast<int>(std::min<unsigned long>(INT_MAX, static_cast<unsigned long>(sent) + taken));
        rest.advance(taken);
    }
    return true;
}

bool NetCommunicator::receive(void* data, int& n) {
    if (data == nullptr || !isOpen() || n <= 0) return false;
    ssize_t received;
    do received = ::recv(descriptor_.get(), data, static_cast<std::size_t>(n), receiveFlags_);
    while (received < 0 && errno == EINTR);
    if (received < 0 && errno != ECONNRESET) {
        printError(withErrno("ERROR: Cannot receive", errno));
        return false;
    }
    n = static_cast<int>(std::max<ssize_t>(received, 0));
    return true;
}

bool NetCommunicator::waitForData() {
    return waitForData(kNoTimeLimit) == WaitData;
}

void NetCommunicator::breakWait() {
    if (!wakeUp_.open()) printError("ERROR: Cannot create event");
    if (!wakeUp_.wake()) printError("ERROR: Cannot set event");
}

int NetCommunicator::waitForData(int ms) {
    if (!isOpen()) return WaitFailed;
    if (!wakeUp_.open()) {
        printError("ERROR: Cannot create event");
        return WaitFailed;
    }
    bool woken = false;
    bool data = false;
    const int ready = pollReadable(wakeUp_.readEnd(), descriptor_.get(), ms, woken, data);
    if (ready == 0) return WaitTimedOut;
    if (ready < 0) {
        printOutput("ERROR: Cannot select");
        return WaitFailed;
    }
    if (woken) {
        wakeUp_.consume();
        return WaitBroken;
    }
    return data ? WaitData : WaitFailed;
}

bool NetCommunicator::dataAvail(int& n) {
    return ::ioctl(descriptor_.get(), FIONREAD, &n) == 0;
}

void NetCommunicator::setTcpNoDelay(bool on) {
    const int value = on ? 1 : 0;
    if (::setsockopt(descriptor_.get(), IPPROTO_TCP, TCP_NODELAY, &value, sizeof value) != 0)
        printError("ERROR: NetCommunicator: cannot set tcpNoDelay");
}

bool NetCommunicator::getTcpNoDelay() const {
    int value = 0;
    socklen_t size = sizeof value;
    if (::getsockopt(descriptor_.get(), IPPROTO_TCP, TCP_NODELAY, &value, &size) != 0)
        printError("ERROR: NetCommunicator: cannot get tcpNoDelay");
    return value != 0;
}

bool NetCommunicator::setSendTimeout(int ms) {
    if (ms < 0) return false;
    ConnectionOptions wanted = options_;
    wanted.sendTimeoutMs = ms;
    return change(wanted);
}

bool NetCommunicator::setKeepAlive(int idleSeconds) {
    if (idleSeconds < 0) return false;
    ConnectionOptions wanted = options_;
    wanted.keepAliveSeconds = idleSeconds;
    return change(wanted);
}

bool NetCommunicator::setUserTimeout(int ms) {
    if (ms < 0) return false;
    ConnectionOptions wanted = options_;
    wanted.userTimeoutMs = ms;
    return change(wanted);
}

void NetCommunicator::adopt(UniqueFd descriptor, const SocketAddress& local, const SocketAddress& remote) {
    descriptor_ = std::move(descriptor);
    localAddress_ = local;
    remoteAddress_ = remote;
    applyOptions();
}

bool NetCommunicator::change(const ConnectionOptions& wanted) {
    const ConnectionOptions previous = std::exchange(options_, wanted);
    if (applyOptions()) return true;
    options_ = previous;  // a refused setting must not spoil later ones and later connections
    return false;
}

bool NetCommunicator::applyOptions() const {
    if (!isOpen() || options_.applyTo(descriptor_.get())) return true;
    printError(withErrno("ERROR: NetCommunicator: cannot set connection options", errno));
    return false;
}

}  // namespace Varnex
