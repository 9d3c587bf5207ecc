#include <Varnex/url/URL.h>

#include <Varnex/url/URLFile.h>

#include <cassert>

namespace Varnex {

URL::~URL() {
    if (impl_ == nullptr) return;
    assert(impl_->refCount >= 1);
    if (--impl_->refCount == 0) delete impl_;
}

URL URL::share(const URLImpl* impl) {
    if (impl != nullptr) ++impl->refCount;
    return URL(const_cast<URLImpl*>(impl));  // whoever made it made it for handles
}

URL URL::resolve(const URL& base, const std::string& text) {
    return URL(URLImpl::create(text, base ? *base : URLFile::_cwd));
}

}  // namespace Varnex
