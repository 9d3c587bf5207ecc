#pragma once

#include <Varnex/Export.h>
#include <Varnex/protocols/MessageHeader.h>

#include <iosfwd>
#include <memory>
#include <streambuf>

namespace Varnex {

/// A stream buffer that writes a body in the standard's chunked coding (RFC 9112, section 7.1) to another stream, which
/// outlives it.
///
/// Bytes are collected into chunks; a block that does not fit becomes one chunk without being copied. A flush sends
/// what is there and flushes the target. Only `finish` ends the body: the destructor does not, nor sends what is left,
/// so that a body that broke off is not taken for a whole one. After a failure nothing more is written. One thread at a
/// time.
class VARNEX_API ChunkedWriter : public std::streambuf {
public:
    static constexpr int kDefaultBufferSize = 8192;  ///< bytes

    explicit ChunkedWriter(std::ostream& target, int bufferSize = kDefaultBufferSize);
    ChunkedWriter(const ChunkedWriter&) = delete;
    ChunkedWriter& operator=(const ChunkedWriter&) = delete;
    ~ChunkedWriter() override;

    /// Sends what is left, the last chunk and the trailer, and flushes the target. False: it failed, or the body has
    /// ended already. Nothing in the trailer is escaped: see `MessageHeader::setChecked`.
    bool finish(const MessageHeader& trailer = {});

protected:
    int_type overflow(int_type c) override;
    int sync() override;
    std::streamsize xsputn(const char* s, std::streamsize n) override;

private:
    enum class State { Open, Finished, Failed };

    void openPutArea();
    [[nodiscard]] bool sendPending();
    [[nodiscard]] bool sendBlock(const char* s, std::streamsize n);
    template <class Write>
    bool writeAs(State after, Write write);

    std::ostream& target_;
    State state_ = State::Open;
    int size_;                        // of the put area
    std::unique_ptr<char[]> buffer_;  // the put area, with room for the lines around a chunk
};

}  // namespace Varnex
