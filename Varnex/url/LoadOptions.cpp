#include <Varnex/url/LoadOptions.h>

#include <Varnex/url/SharedCurrent.h>

#include <utility>

namespace Varnex {

void LoadOptions::setCurrent(std::shared_ptr<const LoadOptions> options) {
    SharedCurrent<LoadOptions>::instance().set(std::move(options));
}

std::shared_ptr<const LoadOptions> LoadOptions::getCurrent() {
    return SharedCurrent<LoadOptions>::instance().get();
}

}  // namespace Varnex
