#pragma once

#include <Varnex/web/Wire.h>

#include <memory>

struct ssl_st;

namespace Varnex {

// Private to the library.

/// Encrypted bytes, the server's side. The descriptor never blocks from then on; waits are of its own.
class TlsWire : public Wire {
public:
    /// Owns `ssl`, and not the descriptor.
    TlsWire(ssl_st* ssl, int fd);
    ~TlsWire() override;

    [[nodiscard]] long receive(char* s, std::size_t n, int ms) override;
    [[nodiscard]] long send(const Chunk* chunks, int count, int ms) override;
    [[nodiscard]] bool hasPending() const override;
    void finish() override;

private:
    struct Deleter {
        void operator()(ssl_st* ssl) const;
    };

    template <class Call>
    [[nodiscard]] long repeat(int ms, Call call);

    std::unique_ptr<ssl_st, Deleter> ssl_;
    int fd_;
    bool isBroken_ = false;
};

}  // namespace Varnex
