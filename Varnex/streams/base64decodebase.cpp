#include <Varnex/streams/base64decodebase.h>

namespace Varnex {

base64decodebase::base64decodebase(std::ostream& target) : buffer_(target) {}

base64decodebase::~base64decodebase() = default;

}  // namespace Varnex
