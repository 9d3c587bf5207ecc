#include <Varnex/transport/DatagramCommunicator.h>

#include <Varnex/transport/IOException.h>
#include <Varnex/transport/PollReadable.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/Socket.h>
#include <Varnex/transport/StreamSocket.h>
#include <Varnex/transport/SystemError.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include <netinet/in.h>

namespace Varnex {

namespace {

sockaddr_in toSystem(const InetAddress& address, unsigned short port) {
    sockaddr_in system{};
    system.sin_family = AF_INET;
    system.sin_port = htons(port);
    system.sin_addr.s_addr = address.getNetworkOrder();
    return system;
}

}  // namespace

DatagramCommunicator::~DatagramCommunicator() = default;

bool DatagramCommunicator::close() {
    unread_ = 0;
    aborted_ = false;
    return NetCommunicator::close();
}

bool DatagramCommunicator::send(const void* data, int& n) {
    return sendTo(data, n, destination_, destinationPort());
}

bool DatagramCommunicator::send(const Chunk* chunks, int count, int& sent) {
    return sendTo(chunks, count, sent, destination_, destinationPort());
}

bool DatagramCommunicator::trySend(const Chunk* chunks, int count, int& sent) {
    sent = 0;
    for (int i = 0; i < count; ++i) {
        pollfd socket{getDescriptor(), POLLOUT, 0};
        const int ready = aborted_ ? -1 : pollDescriptors({&socket, 1}, 0);
        if (ready <= 0) return ready == 0;
        int n = chunks[i].size;
        send(chunks[i].data, n);
        sent += chunks[i].size;
    }
    return true;
}

void DatagramCommunicator::abort() {
    aborted_ = true;
    breakWait();
}

bool DatagramCommunicator::sendTo(const void* data, int& n, const InetAddress& to, unsigned short port) {
    const int size = std::exchange(n, 0);
    if (!isOpen() || data == nullptr || size < 0) return false;
    const sockaddr_in system = toSystem(to, port);
    ssize_t sent;
    do
        sent = ::sendto(getDescriptor(), data, static_cast<std::size_t>(size), getSendFlags() | MSG_NOSIGNAL,
                        reinterpret_cast<const sockaddr*>(&system), sizeof system);
    while (sent < 0 && errno == EINTR);
    if (sent < 0) {
        printError(withErrno("ERROR: Cannot send", errno));
        return false;
    }
    n = static_cast<int>(sent);
    return true;
}

bool DatagramCommunicator::sendTo(const Chunk* chunks, int count, int& sent, const InetAddress& to,
                                  unsigned short port) {
    sent = 0;
    if (!isOpen()) return false;
    std::vector<Chunk> copy(chunks, chunks + std::max(count, 0));
    const sockaddr_in system = toSystem(to, port);
    unsigned long taken = 0;
    if (!Socket(getDescriptor())
             .sendto(copy.data(), count, &taken, getSendFlags(), reinterpret_cast<const sockaddr*>(&system),
                     sizeof system))
        return false;
    sent = static_cast<int>(taken);
    return true;
}

bool DatagramCommunicator::receive(void* data, int& n) {
    if (!isOpen() || aborted_ || data == nullptr || n <= 0) return false;
    while (unread_ == 0) {
        int size = 0;
        if (!waitForData() || !NetCommunicator::dataAvail(size)) return false;
        const bool fits = size <= n;
        if (!fits && size > capacity_) {
            buffer_ = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(size));
            capacity_ = size;
        }
        const int taken = take(fits ? data : buffer_.get(), fits ? n : capacity_);
        if (taken < 0 && errno == EAGAIN) continue;  // it was damaged and is gone
        if (taken < 0) {
            printError(withErrno("ERROR: Cannot receive", errno));
            return false;
        }
        if (fits) {
            n = taken;
            return true;
        }
        position_ = 0;
        unread_ = taken;
    }
    n = std::min(n, unread_);
    std::memcpy(data, buffer_.get() + position_, static_cast<std::size_t>(n));
    position_ += n;
    unread_ -= n;
    return true;
}

/// Takes the next datagram and notes its sender. Its size, or -1 with `errno`; never blocks.
int DatagramCommunicator::take(void* data, int size) {
    sockaddr_in from{};
    socklen_t length = sizeof from;
    ssize_t taken;
    do
        taken = ::recvfrom(getDescriptor(), data, static_cast<std::size_t>(size), getReceiveFlags() | MSG_DONTWAIT,
                           reinterpret_cast<sockaddr*>(&from), &length);
    while (taken < 0 && errno == EINTR);
    if (taken < 0) return -1;
    lastAddress_ = InetAddress::getByNetworkOrder(from.sin_addr.s_addr);
    lastPort_ = ntohs(from.sin_port);
    return static_cast<int>(taken);
}

int DatagramCommunicator::waitForData(int ms) {
    const int result = aborted_ ? static_cast<int>(WaitFailed) : NetCommunicator::waitForData(unread_ > 0 ? 0 : ms);
    if (aborted_) return WaitFailed;
    return unread_ > 0 && result == WaitTimedOut ? static_cast<int>(WaitData) : result;
}

bool DatagramCommunicator::dataAvail(int& n) {
    if (unread_ == 0) return NetCommunicator::dataAvail(n);
    n = unread_;
    return true;
}

unsigned short DatagramCommunicator::getPort() const {
    return isOpen() ? getLocalAddress().getServicePort() : port_;
}

UniqueFd DatagramCommunicator::makeDatagramSocket() {
    UniqueFd socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!socket.isOpen()) printError(withErrno("ERROR: Can't open datagram socket", errno));
    return socket;
}

bool DatagramCommunicator::bindToPort(int fd) const {
    const sockaddr_in any = toSystem(InetAddress::getAnyLocalAddress(), port_);
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&any), sizeof any) == 0) return true;
    printError(withErrno("ERROR: couldn't bind socket", errno));
    return false;
}

bool DatagramCommunicator::adoptBound(UniqueFd socket) try {
    const SocketAddress local = localAddressOf(socket.get(), SocketAddress::Datagram, SocketAddress::UDP);
    adopt(std::move(socket), local, SocketAddress());
    return true;
} catch (const Exception& error) {
    printError(std::string("ERROR: ") + error.what());
    return false;
}

}  // namespace Varnex
