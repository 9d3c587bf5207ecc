#include <Varnex/transport/IOException.h>

namespace Varnex {

IOException::~IOException() = default;

}  // namespace Varnex
