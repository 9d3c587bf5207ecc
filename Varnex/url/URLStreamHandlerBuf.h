#pragma once

#include <Varnex/url/QX_URLStreamHandler.h>

#include <memory>
#include <streambuf>

namespace Varnex {

// Private to the library.

/// Reads a stream of the C interface, which it owns.
class URLStreamHandlerBuf : public std::streambuf {
public:
    static constexpr int kBufferSize = 4096;

    explicit URLStreamHandlerBuf(QX_URLStream* stream);
    URLStreamHandlerBuf(const URLStreamHandlerBuf&) = delete;
    URLStreamHandlerBuf& operator=(const URLStreamHandlerBuf&) = delete;
    ~URLStreamHandlerBuf() override;

protected:
    int_type underflow() override;
    std::streamsize xsgetn(char* s, std::streamsize n) override;

private:
    /// One call of the stream for at most `n` bytes; whatever it answers, 0 to `n`.
    [[nodiscard]] std::streamsize receive(char* s, std::streamsize n);

    struct Closer {
        void operator()(QX_URLStream* stream) const;
    };

    std::unique_ptr<QX_URLStream, Closer> stream_;
    std::unique_ptr<char[]> buffer_;
};

}  // namespace Varnex
