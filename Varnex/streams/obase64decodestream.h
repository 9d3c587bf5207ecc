#pragma once

#include <Varnex/Export.h>
#include <Varnex/streams/base64decodebase.h>

#include <ostream>

namespace Varnex {

/// Writes the bytes of the Base64 text that is written to it to another stream: see `base64decodebuf`.
class VARNEX_API obase64decodestream : public base64decodebase, public std::ostream {
public:
    /// The target outlives this object.
    explicit obase64decodestream(std::ostream& target);
    /// Writes what is left; flush first to learn whether that works.
    ~obase64decodestream() override;

    using base64decodebase::rdbuf;
};

}  // namespace Varnex
