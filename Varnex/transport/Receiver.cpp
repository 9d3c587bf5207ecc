#include <Varnex/transport/Receiver.h>

namespace Varnex {

Receiver::~Receiver() = default;

}  // namespace Varnex
