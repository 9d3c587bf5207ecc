#pragma once

#include <Varnex/transport/InitSocket.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Varnex {

/// An IPv4 host address, without a port. A value; nothing here throws for a failed look-up.
///
/// Look-ups ask the system's resolver and may block for as long as it takes. Any thread may call them.
class VARNEX_API InetAddress {
public:
    /// The invalid address.
    InetAddress() = default;

    /// Not 255.255.255.255.
    [[nodiscard]] bool isValid() const { return address_ != kInvalid; }
    /// 0.0.0.0.
    [[nodiscard]] bool isAnyLocalAddress() const;
    /// Exactly 127.0.0.1; no other 127.x.x.x.
    [[nodiscard]] bool isLoopbackAddress() const;
    /// First octet 224 to 239.
    [[nodiscard]] bool isMulticastAddress() const;

    /// Stores the four octets, most significant first.
    void getAddress(unsigned char* out) const;

    /// The four octets as one number in network byte order, as `in_addr` holds it.
    [[nodiscard]] std::uint32_t getNetworkOrder() const { return address_; }

    /// The official name by reverse look-up, else the dotted text.
    [[nodiscard]] std::string getHostName() const;

    /// The dotted text, such as "127.0.0.1".
    [[nodiscard]] std::string getHostAddress() const;

    /// The netmask of the local interface that carries this address; invalid when none does.
    [[nodiscard]] InetAddress getNetmask() const;

    /// From four octets, most significant first.
    static InetAddress getByAddress(const unsigned char* octets);

    /// From a number in network byte order.
    static InetAddress getByNetworkOrder(std::uint32_t address);

    /// From text as inet_addr(3) reads it, which also takes "1" and octal parts: no check of user input. Text that it
    /// refuses gives the invalid address.
    static InetAddress getByAddress(const std::string& dotted);

    /// From dotted text, else the first address of that host name; invalid when there is none.
    static InetAddress getByName(const std::string& host);

    /// All IPv4 addresses of a host name; dotted text is looked up in reverse first. Empty when there are none.
    static std::vector<InetAddress> getAllByName(const std::string& host);

    /// The first address of this machine's host name; invalid on failure. Often 127.0.1.1 by /etc/hosts.
    static InetAddress getLocalHost();
    static std::vector<InetAddress> getAllLocalHost();

    /// 0.0.0.0.
    static InetAddress getAnyLocalAddress();
    /// 127.0.0.1.
    static InetAddress getLoopbackAddress();

    /// This machine's host name; empty on failure.
    static std::string getLocalHostName();

    friend bool operator==(const InetAddress&, const InetAddress&) = default;

private:
    static constexpr std::uint32_t kInvalid = 0xFFFFFFFF;

    std::uint32_t address_ = kInvalid;  // network byte order

    static InitSocket initSocket_;
};

}  // namespace Varnex
