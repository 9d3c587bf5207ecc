#include <Varnex/transport/Client.h>

#include <Varnex/transport/IOException.h>
#include <Varnex/transport/PollReadable.h>
#include <Varnex/transport/StreamSocket.h>

#include <cerrno>
#include <utility>

namespace Varnex {

Client::Client() = default;

Client::Client(UniqueFd descriptor, const SocketAddress& local, const SocketAddress& remote) {
    adopt(std::move(descriptor), local, remote);
}

Client::~Client() = default;

void Client::open(const std::string& host, unsigned short port) {
    std::vector<SocketAddress> addresses;
    SocketAddress::resolve(host, port, SocketAddress::Passive, SocketAddress::Stream, SocketAddress::TCP, addresses);
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        try {
            open(addresses[i]);
            return;
        } catch (const IOException&) {
            if (i + 1 == addresses.size()) throw;
        }
    }
    throw IOException("Cannot open connection");
}

void Client::open(const SocketAddress& to) {
    close();
    UniqueFd socket = makeSocket(to);
    if (!socket.isOpen()) throw IOException("Cannot open socket", errno);
    const int error =
        connectSocket(socket.get(), to, connectTimeoutMs_ > 0 ? connectTimeoutMs_ : kNoTimeLimit, connectCancel_);
    if (error != 0) throw IOException("Cannot connect to server", error);
    const SocketAddress local = localAddressOf(socket.get(), to.getSockType(), to.getProtocol());
    adopt(std::move(socket), local, to);
}

}  // namespace Varnex
