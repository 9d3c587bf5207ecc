#pragma once

#include <Varnex/Export.h>
#include <Varnex/protocols/MessageHeader.h>

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <streambuf>

namespace Varnex {

/// A stream buffer that reads a body in the standard's chunked coding (RFC 9112, section 7.1) from another stream,
/// which outlives it and is left behind the body's last byte.
///
/// Strict: lines end in CR LF, a size has at most 32 bits, and trailer lines do not continue; what follows a size is
/// skipped. Whatever is damaged, over a limit or cut off throws `std::ios_base::failure`, now and in all later reads; a
/// std::istream turns that into its badbit and counts nothing of the block in which it happens. The source's state is
/// neither asked nor changed. Large reads go straight into the caller's memory, and no announced size is allocated. One
/// thread at a time.
class VARNEX_API ChunkedReader : public std::streambuf {
public:
    static constexpr int kBufferSize = 4096;  ///< bytes; single characters come out of a buffer

    // Limits; 0: none. The trailer has those of `ProtocolHTTP`'s headers.

    static constexpr std::uint64_t kDefaultMaxSizeLine = 4096;      ///< bytes of the line before a chunk
    static constexpr std::uint64_t kDefaultMaxBody = 0;             ///< bytes of all chunks
    static constexpr std::uint64_t kDefaultMaxOverhead = 16777216;  ///< bytes of these lines beside significant digits
    void setMaxSizeLine(std::uint64_t bytes) { maxSizeLine_ = bytes; }
    void setMaxBody(std::uint64_t bytes) { maxBody_ = bytes; }
    void setMaxOverhead(std::uint64_t bytes) { maxOverhead_ = bytes; }

    explicit ChunkedReader(std::istream& source);
    ChunkedReader(const ChunkedReader&) = delete;
    ChunkedReader& operator=(const ChunkedReader&) = delete;
    ~ChunkedReader() override;

    /// Whether the body's end, with the trailer, has been read: only then was nothing cut off.
    [[nodiscard]] bool isComplete() const { return state_ == State::Complete; }
    /// What followed the last chunk; empty until the body is complete.
    [[nodiscard]] const MessageHeader& getTrailer() const { return trailer_; }

protected:
    int_type underflow() override;
    std::streamsize xsgetn(char* s, std::streamsize n) override;

private:
    enum class State { Size, Data, DataEnd, Complete, Damaged };

    [[nodiscard]] bool openChunk();
    [[nodiscard]] std::streamsize receive(char* s, std::streamsize n);
    [[nodiscard]] bool readSizeLine();
    [[nodiscard]] bool readLineEnd();
    [[nodiscard]] bool readTrailer();

    std::streambuf* source_;
    State state_ = State::Size;  // what comes next
    std::uint32_t remaining_ = 0;
    std::uint64_t body_ = 0, overhead_ = 0;
    std::uint64_t maxSizeLine_ = kDefaultMaxSizeLine, maxBody_ = kDefaultMaxBody, maxOverhead_ = kDefaultMaxOverhead;
    MessageHeader trailer_;
    std::unique_ptr<char[]> buffer_;
};

}  // namespace Varnex
