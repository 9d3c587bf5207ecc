#include <Varnex/streams/obase64decodestream.h>

namespace Varnex {

obase64decodestream::obase64decodestream(std::ostream& target)
    : base64decodebase(target), std::ostream(base64decodebase::rdbuf()) {}

obase64decodestream::~obase64decodestream() {
    rdbuf()->flushQuietly();
}

}  // namespace Varnex
