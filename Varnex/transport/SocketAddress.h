#pragma once

#include <Varnex/Export.h>

#include <string>
#include <vector>

#include <netdb.h>
#include <sys/socket.h>

namespace Varnex {

/// One endpoint as the system's resolver gives it: IPv4 or IPv6 address, port, socket type and protocol. A value.
///
/// Look-ups may block for as long as the resolver takes; any thread may call them. They throw `Exception`.
class VARNEX_API SocketAddress {
public:
    /// Hints that pass to getaddrinfo(3) unchanged; combine them with `|`.
    enum Flags {
        NoFlags = 0,
        Passive = AI_PASSIVE,
        CanonName = AI_CANONNAME,
        NumericHost = AI_NUMERICHOST,
        NumericService = AI_NUMERICSERV
    };
    enum SockType { AnyType = 0, Stream = SOCK_STREAM, Datagram = SOCK_DGRAM };
    enum Proto { AnyProto = 0, TCP = IPPROTO_TCP, UDP = IPPROTO_UDP };

    /// Bytes of the largest system address that fits.
    static constexpr socklen_t kMaxAddressSize = 128;

    SocketAddress() = default;
    SocketAddress(const SocketAddress& other);
    SocketAddress& operator=(const SocketAddress& other);

    /// Copies one resolver result. Throws when its address is larger than `kMaxAddressSize`.
    void set(const addrinfo* ai);

    /// Copies a system address; the socket type and the protocol become those given.
    void set(const sockaddr* address, socklen_t length, int sockType, int protocol);

    /// Fills `out`, emptied first, with all results in the resolver's order. An empty host means the wildcard or the
    /// local address, as the flags decide; an empty service means none. Throws the resolver's text.
    static void resolve(const std::string& host, const std::string& service, Flags flags, SockType sockType,
                        Proto proto, std::vector<SocketAddress>& out);
    static void resolve(const std::string& host, unsigned short port, Flags flags, SockType sockType, Proto proto,
                        std::vector<SocketAddress>& out);

    /// 0.0.0.0 or "::".
    [[nodiscard]] bool isUnspecified() const;
    /// Exactly 127.0.0.1 or "::1".
    [[nodiscard]] bool isLoopback() const;

    /// The name by reverse look-up, else the numeric text; throws when there is neither.
    [[nodiscard]] std::string getHostName() const;
    /// The numeric text; throws on failure.
    [[nodiscard]] std::string getHostAddress() const;
    /// The service's name, such as "http", or its number as text; throws on failure.
    [[nodiscard]] std::string getServiceName() const;
    /// The port; throws on failure.
    [[nodiscard]] unsigned short getServicePort() const;

    /// Address and port as one text, such as "127.0.0.1:4711" or "[::1]:4711"; throws on failure.
    [[nodiscard]] std::string toString() const;

    [[nodiscard]] int getFlags() const { return flags_; }
    [[nodiscard]] int getFamily() const { return family_; }
    [[nodiscard]] int getSockType() const { return sockType_; }
    [[nodiscard]] int getProtocol() const { return protocol_; }
    /// The system address, in this object; null before the first `set`.
    [[nodiscard]] const sockaddr* getAddress() const { return addr_; }
    /// Its length in bytes.
    [[nodiscard]] socklen_t getAddressLength() const { return addrLen_; }

private:
    [[nodiscard]] int serviceFlags() const;
    [[nodiscard]] std::string lookUpHost(int flags, int& error) const;
    [[nodiscard]] std::string lookUpService(int flags) const;

    // In the order of a resolver result, which is not that of the system's own record on every platform.
    int flags_ = 0;
    int family_ = 0;
    int sockType_ = 0;
    int protocol_ = 0;
    socklen_t addrLen_ = 0;
    char* canonName_ = nullptr;  // not kept
    sockaddr* addr_ = nullptr;   // own storage
    addrinfo* next_ = nullptr;   // not kept
    alignas(sockaddr_storage) unsigned char storage_[kMaxAddressSize] = {};
};

constexpr SocketAddress::Flags operator|(SocketAddress::Flags a, SocketAddress::Flags b) {
    return static_cast<SocketAddress::Flags>(static_cast<int>(a) | static_cast<int>(b));
}

}  // namespace Varnex
