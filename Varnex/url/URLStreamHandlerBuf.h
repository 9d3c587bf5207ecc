#pragma once

#include <Varnex/url/BlockBuf.h>
#include <Varnex/url/QX_URLStreamHandler.h>

#include <memory>

namespace Varnex {

// Private to the library.

/// Reads a stream of the C interface, which it owns.
class URLStreamHandlerBuf : public BlockBuf {
public:
    /// Closes a stream and frees its record.
    struct Closer {
        void operator()(QX_URLStream* stream) const;
    };
    using OwnedStream = std::unique_ptr<QX_URLStream, Closer>;

    explicit URLStreamHandlerBuf(OwnedStream stream);
    ~URLStreamHandlerBuf() override;

protected:
    /// One call of the stream; whatever it answers, 0 to `n`.
    std::streamsize receive(char* s, std::streamsize n) override;

private:
    OwnedStream stream_;
};

}  // namespace Varnex
