#pragma once

#include <Varnex/Export.h>
#include <Varnex/streams/base64encodebuf.h>

#include <ios>

namespace Varnex {

/// Holds the buffer of an encoding stream, built before the standard stream that uses it.
class VARNEX_API base64encodebase : public virtual std::basic_ios<char> {
public:
    explicit base64encodebase(std::ostream& target, std::string lineSeparator = "");
    ~base64encodebase() override;

    [[nodiscard]] base64encodebuf* rdbuf() const { return &buffer_; }

private:
    // A stream's constness is not its buffer's, as with the standard file streams.
    mutable base64encodebuf buffer_;
};

}  // namespace Varnex
