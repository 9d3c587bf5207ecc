#include <Varnex/transport/NetCommunicator.h>

#include <Varnex/transport/PollReadable.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/RemainingChunks.h>
#include <Varnex/transport/SendAll.h>
#include <Varnex/transport/Socket.h>
#include <Varnex/transport/SocketOptions.h>
#include <Varnex/transport/SystemError.h>
#include <Varnex/transport/WaitForData.h>
#include <Varnex/transport/WaitToSend.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace Varnex {

namespace {

constexpr WaitMessages kWaitMessages{"ERROR: Cannot create event", &printOutput};

}  // namespace

NetCommunicator::NetCommunicator() = default;

NetCommunicator::~NetCommunicator() = default;

bool NetCommunicator::close() {
    const int error = descriptor_.close();
    if (error == 0) return true;
    printError(withErrno("ERROR: While closing", error) + "!");
    return false;
}

bool NetCommunicator::send(const void* data, int& n) {
    if (!isOpen() || data == nullptr || n < 0) {
        n = 0;
        return false;
    }
    return sendAll(data, n, [this](const char* bytes, std::size_t size) { return sendSome(bytes, size); });
}

/// One send(2) that no signal interrupts.
long NetCommunicator::sendSome(const char* bytes, std::size_t size) const {
    ssize_t taken;
    do taken = ::send(descriptor_.get(), bytes, size, sendFlags_ | MSG_NOSIGNAL);
    while (taken < 0 && errno == EINTR && waitToSendAgain(descriptor_.get()));
    return taken;
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

bool NetCommunicator::trySend(const Chunk* chunks, int count, int& sent) {
    sent = 0;
    if (!isOpen()) return false;
    unsigned long taken = 0;
    auto* const readOnly = const_cast<Chunk*>(chunks);
    if (Socket(descriptor_.get())
            .sendto(readOnly, std::min(count, IOV_MAX), &taken, sendFlags_ | MSG_DONTWAIT, nullptr, 0)) {
        sent = static_cast<int>(taken);
        return true;
    }
    if (errno == EAGAIN) return true;
    printError(withErrno("ERROR: Cannot send", errno));
    return false;
}

void NetCommunicator::abort() {
    ::shutdown(descriptor_.get(), SHUT_RDWR);
}

bool NetCommunicator::shutdownSend() {
    return ::shutdown(descriptor_.get(), SHUT_WR) == 0;
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
    Varnex::breakWait(wakeUp_, kWaitMessages);
}

int NetCommunicator::waitForData(int ms) {
    return Varnex::waitForData(descriptor_.get(), wakeUp_, ms, spinUs_, kWaitMessages);
}

bool NetCommunicator::dataAvail(int& n) {
    return ::ioctl(descriptor_.get(), FIONREAD, &n) == 0;
}

void NetCommunicator::setTcpNoDelay(bool on) {
    if (!setSocketOption(descriptor_.get(), IPPROTO_TCP, TCP_NODELAY, on ? 1 : 0))
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
    return setOption(options_.sendTimeoutMs, ms, &setSendTimeLimit);
}

bool NetCommunicator::setKeepAlive(int idleSeconds) {
    return idleSeconds <= kMaxKeepAliveSeconds && setOption(options_.keepAliveSeconds, idleSeconds, &setKeepAliveTime);
}

bool NetCommunicator::setUserTimeout(int ms) {
    return setOption(options_.userTimeoutMs, ms, &setUserTimeLimit);
}

void NetCommunicator::adopt(UniqueFd descriptor, const SocketAddress& local, const SocketAddress& remote) {
    descriptor_ = std::move(descriptor);
    localAddress_ = local;
    remoteAddress_ = remote;
    // A fresh socket has the defaults already.
    if (options_.sendTimeoutMs != 0) applyOption(options_.sendTimeoutMs, &setSendTimeLimit);
    if (options_.keepAliveSeconds != 0) applyOption(options_.keepAliveSeconds, &setKeepAliveTime);
    if (options_.userTimeoutMs != 0) applyOption(options_.userTimeoutMs, &setUserTimeLimit);
}

/// Remembers a setting, unless the present connection refuses it.
bool NetCommunicator::setOption(int& option, int value, OptionSetter apply) {
    if (value < 0 || (isOpen() && !applyOption(value, apply))) return false;
    option = value;
    return true;
}

bool NetCommunicator::applyOption(int value, OptionSetter apply) const {
    if (apply(descriptor_.get(), value)) return true;
    printError(withErrno("ERROR: NetCommunicator: cannot set connection option", errno));
    return false;
}

}  // namespace Varnex
