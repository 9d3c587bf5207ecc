#pragma once

#include <Varnex/Export.h>

#include <chrono>
#include <memory>
#include <optional>
#include <streambuf>
#include <string>
#include <string_view>

namespace Varnex {

class Receiver;
class Sender;

/// A standard stream buffer that writes through a `Sender` and reads through a `Receiver`.
///
/// Output waits in the buffer until that is full, is flushed or is closed; the destructor drops it. Blocks that do not
/// fit go to the sender uncopied, ahead of a buffer that single characters have filled to the last: hand over a record
/// as one block. Failures show as the standard return values, nothing throws or prints of its own.
/// One thread writes while another reads; `breakWait` is for any thread, the setters for when nobody does either.
class VARNEX_API StreamBuf : public std::streambuf {
public:
    /// Sizes in bytes; 0: nothing can be written, or read, by the stream. `sender` and `receiver` may be null, and are
    /// deleted by the destructor as the flags say (set only one for an object that is both); otherwise they outlive
    /// this object. Throws `std::bad_alloc`, as the setters of the sizes do; nothing else here does.
    StreamBuf(Sender* sender, Receiver* receiver, unsigned sendBufSize, unsigned recvBufSize, bool deleteSender,
              bool deleteReceiver);
    StreamBuf(const StreamBuf&) = delete;
    StreamBuf& operator=(const StreamBuf&) = delete;

    // The order of the virtual operations is binary interface: append, never reorder.
    /// Drops what was not flushed.
    ~StreamBuf() override;

    /// Sends past the buffer; on return `length` is how many bytes were taken. False, with 0, without a sender.
    bool send(const void* data, int& length);

    /// Receives past the buffer, once data is there within the time-out. False, with 0, when none came.
    bool receive(void* data, int& length);

    /// Unread bytes and those that the receiver has; false, with 0, without either, or when it cannot tell.
    bool dataAvail(int& count);

    /// Waits without limit, but the deadline's. Unread bytes count as data, here and in the next.
    bool waitForData();
    /// Waits at most `ms` milliseconds, -1 without limit. One of `Receiver::WaitResult`; 0 when nothing can be read.
    int waitForData(int ms);

    /// The unread bytes, for those who look before they read. Valid until anything else is done to the input.
    [[nodiscard]] std::string_view unreadData() const;
    /// Receives more behind the unread bytes, waiting as above; the buffer grows when they fill it. One of
    /// `Receiver::WaitResult`: failed also at the end of the stream. Throws `std::bad_alloc`.
    int receiveMore(int ms);

    /// Ends one wait of the receiver, the present or the next; a read then meets the end of the file.
    void breakWait();

    /// Flushes, then closes the receiver, or the sender if there is no receiver; unread and unsent bytes are dropped.
    /// The result of closing.
    bool close();

    /// Deletes the sender in the end, whatever the constructor was told.
    void ownSender();

    /// The system's text for the present `errno`.
    [[nodiscard]] std::string lastError() const;

    /// Pending output is dropped, flushed before if it does not fit the new size: better flush, and look, yourself.
    void setSendBufSize(unsigned size);
    /// Unread input stays; a size too small for it changes nothing.
    void setRecvBufSize(unsigned size);

    /// How long each wait of a read may take: milliseconds, -1 without limit (at first).
    void setTimeout(int ms) { timeout_ = ms; }
    [[nodiscard]] int getTimeout() const { return timeout_; }

    /// Ends all reads, waits and flushes together `ms` milliseconds from now, however many bytes trickle in; -1: never
    /// (at first). What is buffered can still be read; what is pending is dropped by a `close` that comes too late.
    /// `send` and a single send that blocks are not ended: give the connection a send time-out of its own for that.
    void setDeadline(int ms);

    /// Bytes of one send under a deadline, at most.
    static constexpr int kTimedPiece = 65536;

protected:
    int_type overflow(int_type c) override;
    int sync() override;
    std::streamsize xsputn(const char* s, std::streamsize n) override;
    int_type underflow() override;
    std::streamsize showmanyc() override;
    std::streamsize xsgetn(char* s, std::streamsize n) override;

    /// What the public operations of these names ask, put to the receiver alone.
    bool protDataAvail(int& count);
    bool protWaitForData();
    int protWaitForData(int ms);

private:
    /// As much of a wait as the deadline leaves; none when it has passed.
    [[nodiscard]] std::optional<int> limited(int ms) const;
    [[nodiscard]] int piece(std::streamsize n) const;
    [[nodiscard]] bool sendPending(std::streamsize sent);
    [[nodiscard]] bool sendPendingWith(const char* s, std::streamsize n, std::streamsize& taken);
    [[nodiscard]] std::streamsize sendSome(const char* data, std::streamsize n);
    [[nodiscard]] std::streamsize receiveSome(char* data, std::streamsize n);
    [[nodiscard]] std::streamsize pending() const { return pptr() - pbase(); }
    [[nodiscard]] std::streamsize unread() const { return egptr() - gptr(); }
    void clearPutArea();
    void makeRoom();
    void setUnread(std::streamsize n);

    Sender* sender_;
    Receiver* receiver_;
    std::unique_ptr<Receiver> ownedReceiver_;
    std::unique_ptr<Sender> ownedSender_;
    unsigned sendBufSize_;
    unsigned recvBufSize_;
    std::unique_ptr<char[]> sendBuf_;
    std::unique_ptr<char[]> recvBuf_;
    int timeout_ = -1;
    std::optional<std::chrono::steady_clock::time_point> deadline_;
};

}  // namespace Varnex
