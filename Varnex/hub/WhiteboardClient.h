#pragma once

#include <Varnex/Export.h>

#include <functional>
#include <string>

namespace Varnex {

/// A server's entry in a registry of servers, the whiteboard. It knows what to ask, and whether the server is entered;
/// how the registry is reached is the application's. One thread at a time.
class VARNEX_API WhiteboardClient {
public:
    /// Takes a query, such as "ping?", to the registry. False: it could not, or was refused.
    using Registry = std::function<bool(const std::string& query)>;

    /// Closes an earlier one. Empty, as at first: there is none, and everything fails.
    void open(Registry registry);
    /// Forgets the registry, and leaves the entry in it.
    void close();

    /// Enters the server as the application describes it. False: not entered.
    bool addServer(const std::string& description);
    /// Takes the entry back. True also when there is none.
    bool removeServer();
    /// Whether the registry answers.
    bool ping();

    [[nodiscard]] bool isRegistered() const { return registered_; }

private:
    [[nodiscard]] bool ask(const std::string& query) const { return registry_ && registry_(query); }

    Registry registry_;
    bool registered_ = false;
    std::string description_;
};

}  // namespace Varnex
