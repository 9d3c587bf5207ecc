#pragma once

#include <Varnex/Export.h>
#include <Varnex/streams/base64encodebase.h>

#include <ostream>

namespace Varnex {

/// Writes what is written to it as Base64 to another stream: see `base64encodebuf`.
class VARNEX_API obase64encodestream : public base64encodebase, public std::ostream {
public:
    /// The target outlives this object; `lineSeparator` begins each line but the first of the target's `width()`
    /// characters.
    explicit obase64encodestream(std::ostream& target, std::string lineSeparator = "");
    /// Writes what is left, with its padding; flush first to learn whether that works.
    ~obase64encodestream() override;

    using base64encodebase::rdbuf;
};

}  // namespace Varnex
