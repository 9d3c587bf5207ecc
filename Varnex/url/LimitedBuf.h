#pragma once

#include <Varnex/url/BlockBuf.h>

namespace Varnex {

// Private to the library.

/// Another stream buffer up to a number of bytes; where that goes on, the end is an `URLImpl::Exception`.
class LimitedBuf : public BlockBuf {
public:
    LimitedBuf(std::unique_ptr<std::streambuf> source, long long limit);
    ~LimitedBuf() override;

protected:
    std::streamsize receive(char* s, std::streamsize n) override;
    void checkEnd() override;

private:
    std::unique_ptr<std::streambuf> source_;
    long long left_;
};

}  // namespace Varnex
