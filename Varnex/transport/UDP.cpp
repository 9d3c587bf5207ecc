#include <Varnex/transport/UDP.h>

#include <utility>

namespace Varnex {

UDP::~UDP() = default;

bool UDP::open() {
    close();
    UniqueFd socket = makeDatagramSocket();
    return socket.isOpen() && bindToPort(socket.get()) && adoptBound(std::move(socket));
}

void UDP::setDestination(const InetAddress& to, unsigned short port) {
    setDestinationAddress(to);
    destinationPort_ = port;
}

unsigned short UDP::destinationPort() const {
    return destinationPort_ != 0 ? destinationPort_ : getPort();
}

}  // namespace Varnex
