#pragma once

#include <Varnex/Export.h>

#include <iosfwd>
#include <memory>
#include <streambuf>

namespace Varnex {

/// Base of the stream buffers that convert between the caller and another standard stream, which outlives them.
///
/// What is written waits in a work array, shared by both directions, until that is full or the buffer is flushed; the
/// destructor drops it. A flush also closes the coded text; it does not flush the other stream. After a write that
/// failed, which sets the other stream's badbit, begin anew with a new buffer: how much went out is not known to the
/// byte. Reading leaves the other stream's state alone. One thread at a time.
class VARNEX_API codecbuf : public std::streambuf {
public:
    /// Bytes of the work array, made on first use.
    static constexpr int kBufferSize = 8192;

    codecbuf(const codecbuf&) = delete;
    codecbuf& operator=(const codecbuf&) = delete;
    ~codecbuf() override;

    /// Flushes and lets no exception out: for destructors of streams.
    void flushQuietly() noexcept;

protected:
    /// Null: that direction fails.
    codecbuf(std::ostream* target, std::istream* source);

    int_type overflow(int_type c) override;
    int sync() override;
    std::streamsize xsputn(const char* s, std::streamsize n) override;
    int_type underflow() override;

    /// Makes the `n` bytes at `s`, still the caller's, the work array; without 2 bytes at least the buffer becomes
    /// unbuffered. Null when there is a work array already.
    std::streambuf* setbuf(char* s, std::streamsize n) override;

    /// Converts `n` bytes into `target()`; how many, fewer only when that failed.
    virtual std::streamsize convertWritten(const char* s, std::streamsize n) = 0;
    /// Closes the text in `target()`; false when that failed.
    virtual bool finishWritten() = 0;
    /// Converts from `source()` into at most `n` bytes; how many, 0 at the end.
    virtual std::streamsize convertRead(char* s, std::streamsize n) = 0;

    [[nodiscard]] std::ostream* target() const { return target_; }
    [[nodiscard]] bool isTargetGood() const;
    /// `n` bytes, fewer only at the source's end.
    [[nodiscard]] std::streamsize readSource(char* s, std::streamsize n);
    /// One byte, or the end of the file; takes nothing that follows.
    int_type readSource();
    /// The byte that comes next, or the end of the file; takes nothing.
    [[nodiscard]] int_type peekSource();
    /// Bytes that can be read without waiting, as far as the source knows: a live one may send no more until it is
    /// answered, so what is converted is then handed out.
    [[nodiscard]] std::streamsize readyInSource();

private:
    void makeBuffer();
    void clearAreas();
    void openPutArea();
    [[nodiscard]] bool prepareToWrite();
    [[nodiscard]] bool convertPending();
    template <class Step>
    auto orFailTarget(Step step);
    [[nodiscard]] std::streamsize convert(const char* s, std::streamsize n);
    [[nodiscard]] bool finish();

    std::ostream* target_;
    std::istream* source_;
    std::unique_ptr<char[]> ownBuffer_;
    char slot_ = 0;  // the work array when unbuffered
    char* buffer_ = nullptr;
    char* bufferEnd_ = nullptr;
};

}  // namespace Varnex
