#pragma once

#include <Varnex/Export.h>
#include <Varnex/streams/StreamBase.h>

#include <istream>

namespace Varnex {

class Communicator;

/// A standard stream in both directions over a connection of any kind: see `StreamBuf`. What is written last must be
/// flushed. One thread writes while another reads only if each keeps to its direction's operations and neither looks at
/// the state that both share; two objects, `iStream` and `oStream`, need no such care.
class VARNEX_API ioStream : public StreamBase, public std::basic_iostream<char> {
public:
    /// Deletes the connection in the end if `own`; on a null one every flush and read fails.
    ioStream(Communicator* connection, bool own);
    /// Drops what was not flushed.
    ~ioStream() override;

    using StreamBase::rdbuf;
};

}  // namespace Varnex
