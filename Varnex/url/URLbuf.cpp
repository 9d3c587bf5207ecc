#include <Varnex/url/URLbuf.h>

#include <Varnex/url/URLImpl.h>

#include <utility>

namespace Varnex {

URLbuf::URLbuf(std::unique_ptr<ConnectionDelegate> delegate, std::unique_ptr<CurlTransfer> connection)
    : delegate_(std::move(delegate)), connection_(std::move(connection)) {}

URLbuf::~URLbuf() = default;

std::streamsize URLbuf::receive(char* s, std::streamsize n) {
    delegate_->lend(s, n);
    connection_->run(&ConnectionDelegate::isReadable);
    return delegate_->take();
}

void URLbuf::checkEnd() {
    if (delegate_->hasFailed()) throw URLImpl::Exception(delegate_->getReason());
}

}  // namespace Varnex
