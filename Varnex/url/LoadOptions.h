#pragma once

#include <Varnex/Export.h>
#include <Varnex/protocols/MessageHeader.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace Varnex {

/// How "http:", "https:" and "ftp:" URLs are loaded; proxies and passwords are never taken from the environment or from
/// files. Limits are off at 0.
///
/// Make one the current one of the process, which all URLs open with, or hand it to `openURL`. Not to be changed while
/// it is the current one.
struct VARNEX_API LoadOptions {
    static constexpr std::chrono::milliseconds kDefaultConnectTime{60'000};
    static constexpr std::chrono::milliseconds kDefaultStallTime{60'000};
    static constexpr int kDefaultMaxRedirects = 20;

    /// To look the host up, connect and, for "https:", agree on the encryption.
    std::chrono::milliseconds connectTime = kDefaultConnectTime;
    /// That a reader waits for the server's next byte.
    std::chrono::milliseconds stallTime = kDefaultStallTime;
    /// From "http:" or "https:" to either of them; one more is a failure.
    int maxRedirects = kDefaultMaxRedirects;
    /// Otherwise a redirect is an answer like all others.
    bool followRedirects = true;

    /// A file, in PEM form, of the certificate authorities to trust; empty: those of the system.
    std::string authorities;
    /// Such as "http://proxy:3128"; empty: none. Hosts are looked up by it, so addresses are not checked then.
    std::string proxy;
    /// Lines of the request, also in place of those that are sent anyway, such as "User-Agent". They go to the servers
    /// of redirects too, but for "Authorization" and "Cookie".
    MessageHeader header;
    /// The byte to begin with. A server may send everything all the same: its answer tells.
    long long offset = 0;

    /// Asked about ten times a second while a reader waits, on its thread; true ends the loading.
    std::function<bool()> isCancelled;

    /// Any thread; what is open already goes on as it began. Null: the defaults.
    static void setCurrent(std::shared_ptr<const LoadOptions> options);
    /// Any thread. Never null.
    [[nodiscard]] static std::shared_ptr<const LoadOptions> getCurrent();
};

}  // namespace Varnex
