#include <Varnex/transport/NonBlockingSender.h>

namespace Varnex {

NonBlockingSender::~NonBlockingSender() = default;

}  // namespace Varnex
