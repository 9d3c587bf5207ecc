#include <Varnex/transport/Communicator.h>

namespace Varnex {

Communicator::~Communicator() = default;

}  // namespace Varnex
