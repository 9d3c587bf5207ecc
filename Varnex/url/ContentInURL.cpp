#include <Varnex/url/ContentInURL.h>

#include <Varnex/url/FitInt.h>
#include <Varnex/url/URLPolicy.h>

#include <utility>

namespace Varnex {

URLImpl::Memory memoryOf(const std::string& content, std::string mimeType) {
    const long long size = std::ssize(content);
    URLPolicy::getCurrent()->checkSize(size);
    if (orUnknown(size) < 0) throw URLImpl::Exception("");
    return {std::move(mimeType), orUnknown(size), content.data(), false};
}

}  // namespace Varnex
