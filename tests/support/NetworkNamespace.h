#pragma once

#include <cstdlib>
#include <fstream>
#include <string>

#include <sched.h>
#include <unistd.h>

/// Gives the loopback interface one more address.
inline bool addLoopbackAddress(const std::string& dotted) {
    return std::system(("ip address add " + dotted + "/8 dev lo").c_str()) == 0;
}

/// Moves the calling thread, and those it makes from now on, to a network of their own with nothing but a loopback
/// interface that carries multicast. False when the system does not allow it.
inline bool enterOwnNetwork() {
    const std::string user = std::to_string(::getuid());
    if (::unshare(CLONE_NEWNET) != 0) {
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return false;
        std::ofstream("/proc/thread-self/uid_map")
            << "0 " + user + " 1";  // gives what it starts the right to change it
    }
    return std::system("ip link set lo up multicast on && ip route add 224.0.0.0/4 dev lo") == 0;
}
