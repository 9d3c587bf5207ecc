#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLImpl.h>

#include <map>
#include <string>
#include <vector>

namespace Varnex {

/// Binds a scheme to a factory of its URLs, for static objects: having one registers the scheme.
///
/// There is no lock: register and unregister while no other thread creates URLs.
class VARNEX_API URLImpl::Protocol {
public:
    /// Makes a URL that the caller owns from what follows the ":"; null or an exception: it cannot.
    using Factory = URLImpl* (*)(const std::string& scheme, const std::string& rest);

    /// Registers under `scheme`, which is lower case, in place of an earlier entry.
    Protocol(std::string scheme, Factory factory);
    Protocol(const Protocol&) = delete;
    Protocol& operator=(const Protocol&) = delete;

    // The order of the virtual operations is binary interface: append, never reorder.
    /// Takes the entry under its scheme out, even when another object had registered it.
    virtual ~Protocol();
    /// What the factory gives; null without one.
    [[nodiscard]] virtual URLImpl* createAbsolute(const std::string& scheme, const std::string& rest) const;

    /// The entry of a scheme, lower case, or null.
    [[nodiscard]] static Protocol* find(const std::string& scheme);

    /// All registered schemes, in alphabetical order.
    [[nodiscard]] static std::vector<std::string> getSchemes();

private:
    std::string scheme_;
    Factory factory_;

    /// Null while no scheme is registered.
    static std::map<std::string, Protocol*>* _protocols;
};

}  // namespace Varnex
