#pragma once

#include <Varnex/web/Wire.h>

#include <memory>
#include <string>

struct ssl_ctx_st;

namespace Varnex {

// Private to the library.

/// A certificate with its key, for the server's side of encrypted connections: TLS 1.2 or later. Any thread.
class TlsContext {
public:
    /// Files in PEM form. Throws `Exception` when they cannot be read, or do not belong together.
    TlsContext(const std::string& certificate, const std::string& key);

    /// The connection on a descriptor, which stays the caller's. What is agreed on first happens as it receives.
    [[nodiscard]] std::unique_ptr<Wire> accept(int fd) const;

private:
    struct Deleter {
        void operator()(ssl_ctx_st* context) const;
    };

    std::unique_ptr<ssl_ctx_st, Deleter> context_;
};

}  // namespace Varnex
