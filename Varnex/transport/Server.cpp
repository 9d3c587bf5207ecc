#include <Varnex/transport/Server.h>

#include <Varnex/transport/Client.h>
#include <Varnex/transport/IOException.h>
#include <Varnex/transport/PollReadable.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/SocketOptions.h>
#include <Varnex/transport/StreamSocket.h>

#include <cerrno>
#include <utility>

#include <netinet/in.h>

namespace Varnex {

namespace {

/// The connection was lost before it was accepted, or a signal came: the next one may be waiting already.
bool isTransient(int error) {
    return error == EINTR || error == ECONNABORTED || error == EPROTO;
}

}  // namespace

Server::~Server() = default;

void Server::open(const std::string& host, unsigned short port) {
    std::vector<SocketAddress> addresses;
    SocketAddress::resolve(host, port, SocketAddress::Passive, SocketAddress::Stream, SocketAddress::TCP, addresses);
    for (const SocketAddress& address : addresses) {
        descriptor_.close();
        if (UniqueFd bound = bindTo(address); bound.isOpen()) return listenAt(std::move(bound), address);
    }
    throw IOException("Cannot open server");
}

UniqueFd Server::bindTo(const SocketAddress& address) const {
    UniqueFd socket = makeSocket(address);
    if (!socket.isOpen()) return socket;
    if (address.getFamily() == AF_INET6) setSocketOption(socket.get(), IPPROTO_IPV6, IPV6_V6ONLY, 0);
    // A refusal shows at bind, if it matters. Without sharing, a port whose last connections linger can still be had at
    // once.
    setSocketOption(socket.get(), SOL_SOCKET, portSharing_ ? SO_REUSEPORT : SO_REUSEADDR, 1);
    if (::bind(socket.get(), address.getAddress(), address.getAddressLength()) != 0) socket.close();
    return socket;
}

void Server::listenAt(UniqueFd bound, const SocketAddress& address) {
    if (::listen(bound.get(), backlog_) != 0) throw IOException("Cannot listen at socket", errno);
    localAddress_ = localAddressOf(bound.get(), address.getSockType(), address.getProtocol());
    descriptor_ = std::move(bound);
}

int Server::waitForClient(int ms) {
    if (!isOpen()) throw IOException("Invalid socket");
    if (!wakeUp_.open()) throw IOException("Cannot create pipe");
    bool woken = false;
    bool client = false;
    const int ready = pollReadable(wakeUp_.readEnd(), descriptor_.get(), ms, woken, client);
    if (ready == 0) return WaitTimedOut;
    if (ready < 0) throw IOException("Cannot select");
    if (woken) {
        wakeUp_.consume();
        return WaitBroken;
    }
    if (!client) throw IOException("Cannot wait");
    return WaitClient;
}

bool Server::isClientWaiting() {
    const int ready = pollReadable(descriptor_.get(), 0);
    if (ready < 0) throw IOException("Cannot select");
    return ready > 0;
}

Client* Server::getClient() {
    sockaddr_storage storage{};
    auto* const address = reinterpret_cast<sockaddr*>(&storage);
    socklen_t length = sizeof storage;
    UniqueFd accepted;
    do {
        length = sizeof storage;
        accepted = UniqueFd(::accept4(descriptor_.get(), address, &length, SOCK_CLOEXEC));
    } while (!accepted.isOpen() && isTransient(errno));
    if (!accepted.isOpen()) throw IOException("Cannot accept client", errno);

    const int sockType = localAddress_.getSockType();
    const int protocol = localAddress_.getProtocol();
    SocketAddress remote;
    remote.set(address, length, sockType, protocol);
    const SocketAddress local = localAddressOf(accepted.get(), sockType, protocol);
    return new Client(std::move(accepted), local, remote);
}

void Server::breakWait() {
    if (!wakeUp_.open()) throw IOException("Cannot create pipe");
    if (!wakeUp_.wake()) printError("ERROR: Cannot set event");
}

void Server::close() {
    const int error = descriptor_.close();
    if (error != 0) throw IOException("Cannot close socket", error);
}

}  // namespace Varnex
