#include <Varnex/streams/obase64decodestream.h>

namespace Varnex {

obase64decodestream::obase64decodestream(std::ostream& target)
    : base64decodebase(target), std::ostream(base64decodebase::rdbuf()) {}

obase64decodestream::~obase64decodestream() {
    try {
        rdbuf()->pubsync();
    } catch (...) {  // the target has its badbit, and a destructor must not throw
    }
}

}  // namespace Varnex
