#pragma once

#include <Varnex/url/BlockBuf.h>

namespace Varnex {

// Private to the library.

/// Another stream buffer up to a number of bytes: a read past them throws `URLImpl::Exception`, which streams show as
/// their badbit, unless the other ends there too.
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
