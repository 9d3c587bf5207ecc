#pragma once

#include <Varnex/Export.h>
#include <Varnex/streams/base64decodebuf.h>

#include <ios>

namespace Varnex {

/// Holds the buffer of a decoding stream, built before the standard stream that uses it.
class VARNEX_API base64decodebase : public virtual std::basic_ios<char> {
public:
    explicit base64decodebase(std::ostream& target);
    ~base64decodebase() override;

    [[nodiscard]] base64decodebuf* rdbuf() const { return &buffer_; }

private:
    // A stream's constness is not its buffer's, as with the standard file streams.
    mutable base64decodebuf buffer_;
};

}  // namespace Varnex
