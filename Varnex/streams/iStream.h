#pragma once

#include <Varnex/Export.h>
#include <Varnex/streams/StreamBase.h>

#include <istream>

namespace Varnex {

/// A standard input stream over a receiver: see `StreamBuf`.
class VARNEX_API iStream : public StreamBase, public std::basic_istream<char> {
public:
    /// Deletes the receiver in the end if `own`; a null one is at its end at once.
    iStream(Receiver* receiver, bool own);
    ~iStream() override;

    using StreamBase::rdbuf;
};

}  // namespace Varnex
