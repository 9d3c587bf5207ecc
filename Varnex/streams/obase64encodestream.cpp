#include <Varnex/streams/obase64encodestream.h>

#include <utility>

namespace Varnex {

obase64encodestream::obase64encodestream(std::ostream& target, std::string lineSeparator)
    : base64encodebase(target, std::move(lineSeparator)), std::ostream(base64encodebase::rdbuf()) {}

obase64encodestream::~obase64encodestream() {
    rdbuf()->flushQuietly();
}

}  // namespace Varnex
