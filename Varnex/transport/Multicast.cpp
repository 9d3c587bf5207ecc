#include <Varnex/transport/Multicast.h>

#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/SocketOptions.h>
#include <Varnex/transport/SystemError.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>

namespace Varnex {

namespace {

bool complain(const char* what, int error) {
    printError(withErrno(what, error));
    return false;
}

bool setMembership(int fd, int option, const InetAddress& group, const NetworkInterface& on) {
    ip_mreqn request{};
    request.imr_multiaddr.s_addr = group.getNetworkOrder();
    request.imr_address.s_addr = on.address.getNetworkOrder();
    request.imr_ifindex = on.index;
    return ::setsockopt(fd, IPPROTO_IP, option, &request, sizeof request) == 0;
}

bool sendThrough(int fd, const NetworkInterface& on) {
    return setMembership(fd, IP_MULTICAST_IF, InetAddress::getAnyLocalAddress(), on) ||
           complain("ERROR: setsockopt() IP_MULTICAST_IF failed", errno);
}

}  // namespace

Multicast::Multicast() {
    setPort(kDefaultPort);
}

Multicast::~Multicast() = default;

bool Multicast::open() {
    close();
    UniqueFd socket = makeDatagramSocket();
    return socket.isOpen() && configure(socket.get()) && adoptBound(std::move(socket));
}

bool Multicast::configure(int fd) const {
    if (!setSocketOption(fd, SOL_SOCKET, SO_REUSEPORT, 1))
        return complain("ERROR: setsockopt() SO_REUSEADDR failed", errno);  // the established text
    // Best effort: sharing with other users' processes, and hearing only the groups that this socket joined.
    setSocketOption(fd, SOL_SOCKET, SO_REUSEADDR, 1);
    setSocketOption(fd, IPPROTO_IP, IP_MULTICAST_ALL, 0);
    if (!bindToPort(fd) || !sendThrough(fd, interfaces_.front())) return false;
    for (const NetworkInterface& each : interfaces_)
        if (!setMembership(fd, IP_ADD_MEMBERSHIP, getAddress(), each))
            return complain("ERROR: couldn't join the multicast group", errno);
    return applyTTL(fd);
}

bool Multicast::applyTTL(int fd) const {
    const auto byte = static_cast<unsigned char>(ttl_);
    const bool inRange = ttl_ >= 0 && ttl_ <= 255;
    if (inRange && ::setsockopt(fd, IPPROTO_IP, IP_MULTICAST_TTL, &byte, sizeof byte) == 0) return true;
    return complain("WARNING: setsockopt() IP_MULTICAST_TTL failed", inRange ? errno : EINVAL);
}

/// `n` becomes the smallest number of bytes that went out on an interface.
template <class SendOnce>
bool Multicast::sendOnEach(int& n, SendOnce sendOnce) {
    if (interfaces_.size() == 1 || !isOpen()) return sendOnce(n);
    const int size = n;
    int smallest = 0;
    bool all = true;
    for (const NetworkInterface& each : interfaces_) {
        int sent = size;
        all = sendThrough(getDescriptor(), each) && sendOnce(sent) && all;
        smallest = &each == &interfaces_.front() ? sent : std::min(smallest, sent);
    }
    n = smallest;
    return all;
}

bool Multicast::send(const void* data, int& n) {
    return sendOnEach(n, [&](int& sent) { return DatagramCommunicator::send(data, sent); });
}

bool Multicast::send(const Chunk* chunks, int count, int& sent) {
    return sendOnEach(sent, [&](int& each) { return DatagramCommunicator::send(chunks, count, each); });
}

bool Multicast::setAddress(const std::string& dotted) {
    return setAddress(InetAddress::getByAddress(dotted));
}

bool Multicast::setAddress(const InetAddress& group) {
    setDestinationAddress(group);
    return group.isMulticastAddress();
}

void Multicast::setInterface(const InetAddress& address) {
    NetworkInterface byAddress;
    byAddress.address = address;
    interfaces_ = {byAddress};
}

bool Multicast::setInterface(const std::string& addressOrName) {
    return setInterfaces({addressOrName});
}

bool Multicast::setInterfaces(const std::vector<std::string>& addressesOrNames) {
    std::vector<NetworkInterface> found;
    for (const std::string& each : addressesOrNames) {
        const auto one = NetworkInterface::find(each);
        if (!one) return false;
        const auto isSame = [&](const NetworkInterface& other) { return other.index == one->index; };
        if (std::none_of(found.begin(), found.end(), isSame)) found.push_back(*one);
    }
    if (found.empty()) return false;
    interfaces_ = std::move(found);
    return true;
}

}  // namespace Varnex
