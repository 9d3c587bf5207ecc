#pragma once

#include <Varnex/Export.h>
#include <Varnex/streams/StreamBuf.h>

#include <ios>

namespace Varnex {

/// What `iStream`, `oStream` and `ioStream` share: the one `StreamBuf`, built before the standard stream that uses it.
class VARNEX_API StreamBase : public virtual std::basic_ios<char> {
public:
    StreamBase(Sender* sender, Receiver* receiver, unsigned sendBufSize, unsigned recvBufSize, bool deleteSender,
               bool deleteReceiver);
    /// Drops what was not flushed.
    ~StreamBase() override;

    /// Bytes of each buffer of the streams.
    static constexpr unsigned kBufferSize = 8192;

    [[nodiscard]] StreamBuf* rdbuf() const { return &buffer_; }

private:
    mutable StreamBuf buffer_;  // a stream's constness is not its buffer's, as with the standard file streams
};

}  // namespace Varnex
