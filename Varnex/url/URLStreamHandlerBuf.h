#pragma once

#include <Varnex/url/BlockBuf.h>
#include <Varnex/url/QX_URLStreamHandler.h>

#include <memory>

namespace Varnex {

// Private to the library.

/// Reads a stream of the C interface, which it owns.
class URLStreamHandlerBuf : public BlockBuf {
public:
    explicit URLStreamHandlerBuf(QX_URLStream* stream);
    ~URLStreamHandlerBuf() override;

protected:
    /// One call of the stream; whatever it answers, 0 to `n`.
    std::streamsize receive(char* s, std::streamsize n) override;

private:
    struct Closer {
        void operator()(QX_URLStream* stream) const;
    };

    std::unique_ptr<QX_URLStream, Closer> stream_;
};

}  // namespace Varnex
