#pragma once

#include <Varnex/Export.h>
#include <Varnex/streams/StreamBase.h>

#include <ostream>

namespace Varnex {

/// A standard output stream over a sender: see `StreamBuf`. What is written last must be flushed.
class VARNEX_API oStream : public StreamBase, public std::basic_ostream<char> {
public:
    /// Deletes the sender in the end if `own`; flushing to a null one fails.
    oStream(Sender* sender, bool own);
    /// Drops what was not flushed.
    ~oStream() override;

    using StreamBase::rdbuf;
};

}  // namespace Varnex
