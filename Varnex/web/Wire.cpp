#include <Varnex/web/Wire.h>

namespace Varnex {

Wire::~Wire() = default;

}  // namespace Varnex
