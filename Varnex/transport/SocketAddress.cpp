#include <Varnex/transport/SocketAddress.h>

#include <Varnex/transport/Exception.h>

#include <charconv>
#include <cstring>
#include <memory>

#include <arpa/inet.h>
#include <netinet/in.h>

namespace Varnex {

namespace {

constexpr std::size_t kHostSize = 1025;
constexpr std::size_t kServiceSize = 32;

struct FreeAddrInfo {
    void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};

const char* orNull(const std::string& text) {
    return text.empty() ? nullptr : text.c_str();
}

}  // namespace

SocketAddress::SocketAddress(const SocketAddress& other) {
    *this = other;
}

SocketAddress& SocketAddress::operator=(const SocketAddress& other) {
    if (this == &other) return *this;
    flags_ = other.flags_;
    family_ = other.family_;
    sockType_ = other.sockType_;
    protocol_ = other.protocol_;
    addrLen_ = other.addrLen_;
    std::memcpy(storage_, other.storage_, sizeof storage_);
    addr_ = other.addr_ == nullptr ? nullptr : reinterpret_cast<sockaddr*>(storage_);
    return *this;
}

void SocketAddress::set(const addrinfo* ai) {
    *this = SocketAddress();
    flags_ = ai->ai_flags;
    set(ai->ai_addr, ai->ai_addrlen, ai->ai_socktype, ai->ai_protocol);
    family_ = ai->ai_family;
}

void SocketAddress::set(const sockaddr* address, socklen_t length, int sockType, int protocol) {
    if (length > kMaxAddressSize)
        throw Exception("Invalid address size (" + std::to_string(length) + "), must be smaller than or equal to " +
                        std::to_string(kMaxAddressSize));
    sockType_ = sockType;
    protocol_ = protocol;
    addrLen_ = length;
    addr_ = reinterpret_cast<sockaddr*>(storage_);
    std::memmove(storage_, address, length);
    std::memset(storage_ + length, 0, sizeof storage_ - length);
    family_ = addr_->sa_family;
}

void SocketAddress::resolve(const std::string& host, const std::string& service, Flags flags, SockType sockType,
                            Proto proto, std::vector<SocketAddress>& out) {
    out.clear();
    // The system would silently look up what stands before a NUL.
    if (host.find('\0') != std::string::npos || service.find('\0') != std::string::npos)
        throw Exception(::gai_strerror(EAI_NONAME));
    addrinfo hints{};
    hints.ai_flags = flags;
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = sockType;
    hints.ai_protocol = proto;
    addrinfo* list = nullptr;
    const int error = ::getaddrinfo(orNull(host), orNull(service), &hints, &list);
    if (error != 0) throw Exception(::gai_strerror(error));
    const std::unique_ptr<addrinfo, FreeAddrInfo> owner(list);
    for (const addrinfo* next = list; next != nullptr; next = next->ai_next) out.emplace_back().set(next);
}

void SocketAddress::resolve(const std::string& host, unsigned short port, Flags flags, SockType sockType, Proto proto,
                            std::vector<SocketAddress>& out) {
    resolve(host, std::to_string(port), flags, sockType, proto, out);
}

bool SocketAddress::isUnspecified() const {
    if (family_ == AF_INET) return reinterpret_cast<const sockaddr_in*>(addr_)->sin_addr.s_addr == htonl(INADDR_ANY);
    if (family_ == AF_INET6) return IN6_IS_ADDR_UNSPECIFIED(&reinterpret_cast<const sockaddr_in6*>(addr_)->sin6_addr);
    return false;
}

bool SocketAddress::isLoopback() const {
    if (family_ == AF_INET)
        return reinterpret_cast<const sockaddr_in*>(addr_)->sin_addr.s_addr == htonl(INADDR_LOOPBACK);
    if (family_ == AF_INET6) return IN6_IS_ADDR_LOOPBACK(&reinterpret_cast<const sockaddr_in6*>(addr_)->sin6_addr);
    return false;
}

std::string SocketAddress::getHostName() const {
    int error = 0;
    const std::string name = lookUpHost(0, error);
    return error == 0 ? name : getHostAddress();
}

std::string SocketAddress::getHostAddress() const {
    int error = 0;
    const std::string text = lookUpHost(NI_NUMERICHOST, error);
    if (error != 0) throw Exception(::gai_strerror(error));
    return text;
}

std::string SocketAddress::getServiceName() const {
    return lookUpService(serviceFlags());
}

unsigned short SocketAddress::getServicePort() const {
    const std::string text = lookUpService(serviceFlags() | NI_NUMERICSERV);
    unsigned short port = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, port);
    if (error != std::errc() || stop != end) throw Exception("Connot convert service to port - " + text);
    return port;
}

std::string SocketAddress::toString() const {
    const std::string host = getHostAddress();
    return (family_ == AF_INET6 ? "[" + host + "]" : host) + ":" + std::to_string(getServicePort());
}

int SocketAddress::serviceFlags() const {
    return protocol_ == UDP ? NI_DGRAM : 0;
}

std::string SocketAddress::lookUpHost(int flags, int& error) const {
    char host[kHostSize] = {};
    error = ::getnameinfo(addr_, addrLen_, host, sizeof host, nullptr, 0, flags);
    return host;
}

std::string SocketAddress::lookUpService(int flags) const {
    char service[kServiceSize] = {};
    const int error = ::getnameinfo(addr_, addrLen_, nullptr, 0, service, sizeof service, flags);
    if (error != 0) throw Exception(::gai_strerror(error));
    return service;
}

}  // namespace Varnex
