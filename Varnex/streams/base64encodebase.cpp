#include <Varnex/streams/base64encodebase.h>

#include <utility>

namespace Varnex {

base64encodebase::base64encodebase(std::ostream& target, std::string lineSeparator)
    : buffer_(target, std::move(lineSeparator)) {}

base64encodebase::~base64encodebase() = default;

}  // namespace Varnex
