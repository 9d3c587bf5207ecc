#include <Varnex/transport/HostLookup.h>

#include <cerrno>
#include <cstring>

#include <netdb.h>
#include <sys/socket.h>

namespace Varnex {

namespace {

constexpr std::size_t kFirstBufferSize = 1024;
constexpr std::size_t kMaxBufferSize = std::size_t{1} << 20;

HostEntry copyEntry(const hostent& entry) {
    HostEntry copy;
    copy.name = entry.h_name;
    if (entry.h_addrtype != AF_INET || entry.h_length != sizeof(std::uint32_t)) return copy;
    for (char** next = entry.h_addr_list; *next != nullptr; ++next) {
        std::uint32_t address;
        std::memcpy(&address, *next, sizeof address);
        copy.addresses.push_back(address);
    }
    return copy;
}

/// Calls a re-entrant look-up with a larger buffer until the entry fits.
template <class LookUp>
HostEntry callWithGrowingBuffer(LookUp lookUp) {
    for (std::size_t size = kFirstBufferSize; size <= kMaxBufferSize; size *= 2) {
        std::vector<char> buffer(size);
        hostent storage{};
        hostent* entry = nullptr;
        int hostError = 0;
        const int error = lookUp(&storage, buffer.data(), buffer.size(), &entry, &hostError);
        if (error == ERANGE) continue;
        return error == 0 && entry != nullptr ? copyEntry(*entry) : HostEntry();
    }
    return {};
}

}  // namespace

HostEntry lookUpHostName(const std::string& host) {
    return callWithGrowingBuffer(
        [&](hostent* storage, char* buffer, std::size_t size, hostent** entry, int* hostError) {
            return ::gethostbyname_r(host.c_str(), storage, buffer, size, entry, hostError);
        });
}

HostEntry lookUpHostAddress(std::uint32_t address) {
    return callWithGrowingBuffer(
        [&](hostent* storage, char* buffer, std::size_t size, hostent** entry, int* hostError) {
            return ::gethostbyaddr_r(&address, sizeof address, AF_INET, storage, buffer, size, entry, hostError);
        });
}

}  // namespace Varnex
