#pragma once

#include <Varnex/url/BlockBuf.h>
#include <Varnex/url/ConnectionDelegate.h>
#include <Varnex/url/CurlTransfer.h>

#include <memory>

namespace Varnex {

// Private to the library.

/// Reads what is being loaded, and has it go on meanwhile.
class URLbuf : public BlockBuf {
public:
    URLbuf(std::unique_ptr<ConnectionDelegate> delegate, std::unique_ptr<CurlTransfer> connection);
    ~URLbuf() override;

protected:
    std::streamsize receive(char* s, std::streamsize n) override;
    void checkEnd() override;

private:
    std::unique_ptr<ConnectionDelegate> delegate_;
    std::unique_ptr<CurlTransfer> connection_;
};

}  // namespace Varnex
