#pragma once

#include <cstring>

#include <arpa/inet.h>
#include <net/if.h>
#include <net/route.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

/// Gives the loopback interface one more address.
inline bool addLoopbackAddress(const char* dotted) {
    const int fd = ::socket(AF_INET, SOCK_DGRAM, 0);
    ifreq alias{};
    std::strcpy(alias.ifr_name, "lo:1");
    auto& address = reinterpret_cast<sockaddr_in&>(alias.ifr_addr);
    address.sin_family = AF_INET;
    ::inet_pton(AF_INET, dotted, &address.sin_addr);
    const bool done = ::ioctl(fd, SIOCSIFADDR, &alias) == 0;
    ::close(fd);
    return done;
}

/// Moves the calling thread, and those it makes from now on, to a network of their own with nothing but a loopback
/// interface that carries multicast. False when the system does not allow it.
inline bool enterOwnNetwork() {
    if (::unshare(CLONE_NEWNET) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return false;
    const int fd = ::socket(AF_INET, SOCK_DGRAM, 0);
    ifreq loopback{};
    std::strcpy(loopback.ifr_name, "lo");
    loopback.ifr_flags = IFF_UP | IFF_MULTICAST;
    bool done = ::ioctl(fd, SIOCSIFFLAGS, &loopback) == 0;
    rtentry route{};
    const auto set = [](sockaddr& address, unsigned network) {
        auto& ipv4 = reinterpret_cast<sockaddr_in&>(address);
        ipv4.sin_family = AF_INET;
        ipv4.sin_addr.s_addr = htonl(network);
    };
    set(route.rt_dst, 0xE0000000);
    set(route.rt_genmask, 0xF0000000);
    route.rt_flags = RTF_UP;
    route.rt_dev = loopback.ifr_name;
    done = ::ioctl(fd, SIOCADDRT, &route) == 0 && done;
    ::close(fd);
    return done;
}
