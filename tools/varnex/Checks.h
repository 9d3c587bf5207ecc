#pragma once

#include <Varnex/transport/NetworkInterface.h>

#include <string>
#include <vector>

namespace VarnexTool {

/// What one look at this machine gave. A value.
struct Finding {
    enum Level { Ok, Warning, Problem };

    Level level = Ok;
    std::string subject;  ///< such as "interface eth0 192.168.1.5"
    std::string what;
    std::string fix;  ///< empty when there is nothing to do

    [[nodiscard]] const char* levelName() const;
};

/// Sends a query that nobody answers on the group of discovery, and waits until it is heard back. An interface that
/// must work and does not is a problem.
[[nodiscard]] Finding checkInterface(const Varnex::NetworkInterface& interface, bool mustWork);

/// Whether the address of this host's name, which discovery takes without a chosen interface, is one that others reach.
[[nodiscard]] Finding checkHostName(bool mustWork);

/// Whether a TCP port is free. It listens there for a moment.
[[nodiscard]] Finding checkPort(unsigned short port);

/// For how many connections the descriptors of a process suffice.
[[nodiscard]] Finding checkDescriptors();

}  // namespace VarnexTool
