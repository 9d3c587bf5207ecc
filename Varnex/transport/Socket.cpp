#include <Varnex/transport/Socket.h>

#include <Varnex/transport/InetAddress.h>
#include <Varnex/transport/SystemError.h>
#include <Varnex/transport/WaitToSend.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <vector>

#include <sys/uio.h>

namespace Varnex {

// Here and not beside its class, so that whoever links a socket from the static library gets the guard too.
InitSocket InetAddress::initSocket_;

namespace {

constexpr std::size_t kChunksOnStack = 5;

iovec toVector(const Chunk& chunk) {
    return {const_cast<void*>(chunk.data), static_cast<std::size_t>(chunk.size)};
}

ssize_t sendVectors(int fd, iovec* vectors, std::size_t count, int flags, const sockaddr* to, unsigned int toLen) {
    msghdr message{};
    message.msg_name = const_cast<sockaddr*>(to);
    message.msg_namelen = toLen;
    message.msg_iov = vectors;
    message.msg_iovlen = count;
    ssize_t sent;
    do sent = ::sendmsg(fd, &message, flags | MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR && waitToSendAgain(fd));
    return sent;
}

/// More pieces than the system takes: one block with all bytes.
std::vector<char> join(const Chunk* chunks, std::size_t count) {
    std::vector<char> all;
    for (std::size_t i = 0; i < count; ++i) {
        const auto* bytes = static_cast<const char*>(chunks[i].data);
        all.insert(all.end(), bytes, bytes + chunks[i].size);
    }
    return all;
}

ssize_t sendChunks(int fd, const Chunk* chunks, std::size_t count, int flags, const sockaddr* to, unsigned int toLen) {
    std::array<iovec, kChunksOnStack> few;
    if (count <= few.size()) {
        for (std::size_t i = 0; i < count; ++i) few[i] = toVector(chunks[i]);
        return sendVectors(fd, few.data(), count, flags, to, toLen);
    }
    if (count <= IOV_MAX) {
        std::vector<iovec> many;
        many.reserve(count);
        for (std::size_t i = 0; i < count; ++i) many.push_back(toVector(chunks[i]));
        return sendVectors(fd, many.data(), count, flags, to, toLen);
    }
    std::vector<char> all = join(chunks, count);
    iovec one{all.data(), all.size()};
    return sendVectors(fd, &one, 1, flags, to, toLen);
}

bool hasNegativeSize(const Chunk* chunks, int count) {
    for (int i = 0; i < count; ++i)
        if (chunks[i].size < 0) return true;
    return count < 0;
}

}  // namespace

bool Socket::sendto(Chunk* chunks, int count, unsigned long* sent, int flags, const SocketAddress& to) {
    return sendto(chunks, count, sent, flags, to.getAddress(), to.getAddressLength());
}

bool Socket::sendto(Chunk* chunks, int count, unsigned long* sent, int flags, const sockaddr* to, unsigned int toLen) {
    ssize_t result = -1;
    if (hasNegativeSize(chunks, count))
        errno = EINVAL;
    else
        result = sendChunks(fd_, chunks, static_cast<std::size_t>(count), flags, to, toLen);
    *sent = static_cast<unsigned long>(result);
    return result >= 0;
}

std::string Socket::lastError() const {
    return systemErrorText(errno);
}

void Socket::set(int fd, int family, int sockType, int protocol) {
    fd_ = fd;
    family_ = family;
    sockType_ = sockType;
    protocol_ = protocol;
}

}  // namespace Varnex
