#pragma once

#include "Failure.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace VarnexTool {

/// How a command and the servers of the network find each other, as options of the command line. A value.
struct DiscoveryOptions {
    bool isWanted = false;
    std::vector<std::string> interfaces;  ///< by name or address; empty: the one of this host's own address
    std::string mask = "0xffffffff";
    unsigned short id = 0;

    /// `flagHelp` explains --discover, which the other options then need; empty: there is no such flag.
    void addTo(CLI::App& app, const std::string& flagHelp);

    /// The low 32 bits count. Throws `UsageError`.
    [[nodiscard]] long maskBits() const;

    /// Either a HOST:PORT was typed or --discover. Throws `UsageError`.
    void checkWith(const std::string& hostAndPort) const;

    /// Sets up a `MultiServer` or a `MultiClient`. Throws `UsageError`.
    template <class Hub>
    void applyTo(Hub& hub) const {
        hub.setId(id);
        if (!interfaces.empty() && !hub.setDiscoveryInterfaces(interfaces))
            throw UsageError("--interface: there is no such IPv4 network interface");
    }
};

/// Why discovery does not work, after an `open` of this thread that could not begin it.
[[nodiscard]] std::string whyNotDiscovering();

}  // namespace VarnexTool
