#pragma once

#include <Varnex/url/URLPolicy.h>

#include <exception>
#include <memory>
#include <string>

#include <sys/socket.h>

namespace Varnex {

// Private to the library.

/// Asks the policy about all that a loading meets: the URLs of redirects, and the addresses behind names.
class LoadGuard {
public:
    /// `hasProxy`: the addresses are those of the proxy, which are nobody's concern.
    LoadGuard(std::shared_ptr<const URLPolicy> policy, bool hasProxy);

    /// False: refused, and remembered.
    [[nodiscard]] bool allowsUrl(const std::string& url);
    [[nodiscard]] bool allowsAddress(const sockaddr& address);
    /// The numeric address of a connection that may be older than the policy.
    [[nodiscard]] bool allowsAddress(const std::string& address);

    /// Throws what has refused something, if anything has.
    void raise() const;

private:
    template <class Check>
    bool allows(Check check);

    std::shared_ptr<const URLPolicy> policy_;
    bool checksAddresses_;
    std::string allowed_;  // the last URL
    std::exception_ptr refusal_;
};

}  // namespace Varnex
