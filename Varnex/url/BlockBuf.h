#pragma once

#include <ios>
#include <memory>
#include <streambuf>

namespace Varnex {

// Private to the library.

/// Base of the read-only stream buffers over something that delivers blocks. Single characters come out of a buffer,
/// larger reads go straight into the caller's memory.
class BlockBuf : public std::streambuf {
public:
    static constexpr int kBufferSize = 4096;

    BlockBuf(const BlockBuf&) = delete;
    BlockBuf& operator=(const BlockBuf&) = delete;
    ~BlockBuf() override;

    /// The stream that reads this, which lives as long: it gets its badbit when a block ends with damage. After a short
    /// block a stream does not ask again, and one that throws loses the block.
    void setStream(std::ios& stream) { stream_ = &stream; }

    /// Waits for the next bytes and reads what is there, up to `n`, which is more than 0; 0 at the end. Throws
    /// `URLImpl::Exception` when that is not the end that it should be.
    [[nodiscard]] std::streamsize readSome(char* s, std::streamsize n);

protected:
    BlockBuf();

    int_type underflow() override;
    std::streamsize xsgetn(char* s, std::streamsize n) override;

    /// Up to `n` bytes, `n` being more than 0; 0 at the end.
    [[nodiscard]] virtual std::streamsize receive(char* s, std::streamsize n) = 0;
    /// Called when a read finds less than it asked for; throws `URLImpl::Exception` when that is not the end that it
    /// should be.
    virtual void checkEnd() {}

private:
    void tellStreamOfDamage();

    std::ios* stream_ = nullptr;
    std::unique_ptr<char[]> buffer_;
};

}  // namespace Varnex
