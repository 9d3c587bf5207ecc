#pragma once

#include <tests/support/ChildProcess.h>

#include <algorithm>

/// The varnex command as a process of its own.
struct Process : ChildProcess {
    /// `words`: the arguments, as a shell reads them.
    explicit Process(const std::string& words) : ChildProcess("'" VARNEX_COMMAND "' " + words) {}
};

/// `varnex listen` or `varnex hub` on loopback, with the address it listens at.
struct Serving : Process {
    explicit Serving(const std::string& words) : Process(words) {
        const std::string first = text(Error);
        EXPECT_EQ(first.substr(0, 13), "listening on ");
        address = first.substr(std::min<std::size_t>(13, first.size()));
    }
    [[nodiscard]] unsigned short port() const {
        return static_cast<unsigned short>(std::stoi(address.substr(address.rfind(':') + 1)));
    }
    std::string address;
};
