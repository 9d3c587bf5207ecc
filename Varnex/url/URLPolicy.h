#pragma once

#include <Varnex/Export.h>

#include <memory>
#include <set>
#include <string>
#include <utility>

#include <sys/socket.h>

namespace Varnex {

class URLImpl;

/// What may be opened: for a program that gets URLs from strangers, such as those in a downloaded scene. At first
/// everything may.
///
/// Fill one, then make it the current one; every opening asks that, parsing does not. A derived class may add checks of
/// its own. Not to be changed while it is the current one.
class VARNEX_API URLPolicy {
public:
    /// "No limit" of `setMaxSize`, and the default.
    static constexpr long long kUnlimited = 0;

    URLPolicy() = default;
    URLPolicy(const URLPolicy&) = default;
    URLPolicy& operator=(const URLPolicy&) = default;
    virtual ~URLPolicy();

    /// Only these schemes, in lower case, open; an empty set: all. An archive also needs the scheme of what it is in.
    void setAllowedSchemes(std::set<std::string> schemes) { schemes_ = std::move(schemes); }

    /// Bytes that one resource may have: a longer one does not open, and one whose length is not announced fails past
    /// them, its stream by the badbit. Also limits the copy of an archive that cannot be read where it is.
    void setMaxSize(long long bytes) { maxSize_ = bytes; }
    [[nodiscard]] long long getMaxSize() const { return maxSize_; }

    /// Refuses this machine and private networks: loopback, link-local, private and reserved addresses, in every
    /// spelling, and the name "localhost". Other names are looked up by whoever connects, which then asks
    /// `allowsAddress`.
    void setPublicHostsOnly(bool isOn) { publicHostsOnly_ = isOn; }

    /// Refuses files that are not below `folder`, symbolic links followed; empty: all may be read. Throws
    /// `URLImpl::Exception` when there is no such folder.
    void setFileRoot(const std::string& folder);

    /// Throws `URLImpl::Exception` when `url` must not be opened, as far as its text tells.
    virtual void check(const URLImpl& url) const;

    /// `host`: a name or an address, IPv6 with or without brackets; may be empty.
    [[nodiscard]] bool allowsHost(const std::string& host) const;
    [[nodiscard]] bool allowsAddress(const sockaddr& address) const;
    /// Throws `URLImpl::Exception` when `allowsHost` says no: for URLs that keep their host to themselves.
    void checkHost(const std::string& host) const;
    /// Throws `URLImpl::Exception` when `allowsAddress` says no.
    void checkAddress(const sockaddr& address) const;
    /// `path`: without links, as realpath(3) gives it.
    [[nodiscard]] bool allowsFile(const std::string& path) const;
    [[nodiscard]] bool confinesFiles() const { return !fileRoot_.empty(); }
    /// Throws `URLImpl::Exception` when a resource must not have that many bytes; a negative number: not known.
    void checkSize(long long bytes) const;
    /// Throws what `checkSize` does.
    [[noreturn]] static void refuseSize();

    /// Any thread; what is open already stays open. Null: everything is allowed.
    static void setCurrent(std::shared_ptr<const URLPolicy> policy);
    /// Any thread. Never null.
    [[nodiscard]] static std::shared_ptr<const URLPolicy> getCurrent();

private:
    std::set<std::string> schemes_;
    long long maxSize_ = kUnlimited;
    bool publicHostsOnly_ = false;
    std::string fileRoot_;
};

}  // namespace Varnex
