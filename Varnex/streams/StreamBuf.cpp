#include <Varnex/streams/StreamBuf.h>

#include <Varnex/transport/Chunk.h>
#include <Varnex/transport/Receiver.h>
#include <Varnex/transport/Sender.h>
#include <Varnex/transport/SystemError.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

namespace Varnex {

namespace {

// A size of 0 has no array, so that the standard pointers of that area are null.
std::unique_ptr<char[]> makeBuffer(unsigned size) {
    return size == 0 ? nullptr : std::make_unique_for_overwrite<char[]>(size);
}

int clipped(std::streamsize n) {
    return static_cast<int>(std::min<std::streamsize>(n, std::numeric_limits<int>::max()));
}

}  // namespace

StreamBuf::StreamBuf(Sender* sender, Receiver* receiver, unsigned sendBufSize, unsigned recvBufSize, bool deleteSender,
                     bool deleteReceiver)
    : sender_(sender),
      receiver_(receiver),
      ownedReceiver_(deleteReceiver ? receiver : nullptr),
      ownedSender_(deleteSender ? sender : nullptr),
      sendBufSize_(sendBufSize),
      recvBufSize_(recvBufSize),
      sendBuf_(makeBuffer(sendBufSize)),
      recvBuf_(makeBuffer(recvBufSize)) {
    clearPutArea();
    setUnread(0);
}

// Nothing is flushed: the connection may be gone, and a destructor must not block.
StreamBuf::~StreamBuf() = default;

bool StreamBuf::send(const void* data, int& length) {
    if (sender_ != nullptr) return sender_->send(data, length);
    length = 0;
    return false;
}

bool StreamBuf::receive(void* data, int& length) {
    if (protWaitForData(timeout_) == Receiver::WaitData) return receiver_->receive(data, length);
    length = 0;
    return false;
}

bool StreamBuf::dataAvail(int& count) {
    count = 0;
    if (recvBuf_ == nullptr || !protDataAvail(count)) return false;
    count = clipped(count + unread());
    return true;
}

bool StreamBuf::waitForData() {
    return recvBuf_ != nullptr && (unread() > 0 || protWaitForData());
}

int StreamBuf::waitForData(int ms) {
    if (recvBuf_ == nullptr) return Receiver::WaitFailed;
    return unread() > 0 ? Receiver::WaitData : protWaitForData(ms);
}

std::string_view StreamBuf::unreadData() const {
    return {gptr(), static_cast<std::size_t>(unread())};
}

int StreamBuf::receiveMore(int ms) {
    if (recvBuf_ == nullptr) return Receiver::WaitFailed;
    const int result = protWaitForData(ms);
    if (result != Receiver::WaitData) return result;
    makeRoom();
    int n = static_cast<int>(recvBuf_.get() + recvBufSize_ - egptr());
    if (!receiver_->receive(egptr(), n) || n <= 0) return Receiver::WaitFailed;
    setg(eback(), gptr(), egptr() + n);
    return Receiver::WaitData;
}

/// Behind the unread bytes.
void StreamBuf::makeRoom() {
    if (egptr() < recvBuf_.get() + recvBufSize_) return;
    if (gptr() == eback()) return setRecvBufSize(recvBufSize_ * 2);
    const std::streamsize kept = unread();
    std::memmove(recvBuf_.get(), gptr(), static_cast<std::size_t>(kept));
    setUnread(kept);
}

bool StreamBuf::protDataAvail(int& count) {
    count = 0;
    if (receiver_ != nullptr && receiver_->dataAvail(count)) return true;
    count = 0;
    return false;
}

bool StreamBuf::protWaitForData() {
    if (deadline_) return protWaitForData(-1) == Receiver::WaitData;
    return receiver_ != nullptr && receiver_->waitForData();
}

int StreamBuf::protWaitForData(int ms) {
    if (receiver_ == nullptr) return Receiver::WaitFailed;
    const auto wait = limited(ms);
    return wait ? receiver_->waitForData(*wait) : Receiver::WaitTimedOut;
}

void StreamBuf::breakWait() {
    if (receiver_ != nullptr) receiver_->breakWait();
}

bool StreamBuf::close() {
    sync();
    // A receiver stands for both sides, as it does in a connection: the sender beside it is not closed.
    const bool closed = receiver_ != nullptr ? receiver_->close() : sender_ != nullptr && sender_->close();
    setUnread(0);
    clearPutArea();
    return closed;
}

void StreamBuf::ownSender() {
    ownedSender_.reset(sender_);
}

std::string StreamBuf::lastError() const {
    return systemErrorText(errno);
}

void StreamBuf::setSendBufSize(unsigned size) {
    if (sendBuf_ != nullptr && pending() > size) sync();
    sendBuf_ = makeBuffer(size);
    sendBufSize_ = size;
    clearPutArea();  // drops pending output that fits: wanted so
}

void StreamBuf::setRecvBufSize(unsigned size) {
    if (unread() > size) return;
    auto buffer = makeBuffer(size);
    const std::streamsize kept = unread();
    if (kept > 0) std::memcpy(buffer.get(), gptr(), static_cast<std::size_t>(kept));
    recvBuf_ = std::move(buffer);
    recvBufSize_ = size;
    setUnread(kept);
}

void StreamBuf::setDeadline(int ms) {
    deadline_.reset();
    if (ms >= 0) deadline_ = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
}

std::optional<int> StreamBuf::limited(int ms) const {
    if (!deadline_) return ms;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline_ - std::chrono::steady_clock::now());
    if (left.count() <= 0) return std::nullopt;
    return ms < 0 ? clipped(left.count()) : std::min(ms, clipped(left.count()));
}

// The last byte stays outside the put area, so that `overflow` has room for the character it is given.
void StreamBuf::clearPutArea() {
    char* const begin = sendBuf_.get();
    setp(begin, begin == nullptr ? nullptr : begin + (sendBufSize_ - 1));
}

void StreamBuf::setUnread(std::streamsize n) {
    setg(recvBuf_.get(), recvBuf_.get(), recvBuf_.get() + n);
}

/// What one send may take: little under a deadline, so that it is looked at again before a slow peer has taken all.
int StreamBuf::piece(std::streamsize n) const {
    return clipped(deadline_ ? std::min<std::streamsize>(n, kTimedPiece) : n);
}

/// What the sender took of one call; 0 when it failed, even after a part.
std::streamsize StreamBuf::sendSome(const char* data, std::streamsize n) {
    int taken = piece(n);
    if (sender_ == nullptr || !limited(-1) || !sender_->send(data, taken)) return 0;
    return std::clamp<std::streamsize>(taken, 0, n);
}

/// What one call received; 0 when nothing came in time.
std::streamsize StreamBuf::receiveSome(char* data, std::streamsize n) {
    int taken = clipped(n);
    if (protWaitForData(timeout_) != Receiver::WaitData || !receiver_->receive(data, taken)) return 0;
    return std::clamp<std::streamsize>(taken, 0, n);
}

int StreamBuf::sync() {
    return sendBuf_ != nullptr && sendPending(0) ? 0 : -1;
}

/// Flushes, when `sent` bytes of the pending block are gone already. On failure all of it stays, the part that was sent
/// too: the whole block goes out again.
bool StreamBuf::sendPending(std::streamsize sent) {
    while (sent < pending()) {
        const std::streamsize taken = sendSome(pbase() + sent, pending() - sent);
        if (taken == 0) return false;
        sent += taken;
    }
    clearPutArea();
    return true;
}

/// Flushes, in one call with the `n` bytes that follow where the sender may join them; `taken` is how many of those
/// went along. False: a send failed, and what followed is not to be sent.
bool StreamBuf::sendPendingWith(const char* s, std::streamsize n, std::streamsize& taken) {
    const std::streamsize before = pending();
    const bool joins = before > 0 && before + n == piece(before + n) && sender_ != nullptr && !sender_->keepsMessages();
    if (!joins) return sendPending(0);
    const Chunk chunks[] = {{pbase(), static_cast<int>(before)}, {s, static_cast<int>(n)}};
    int sent = 0;
    const bool ok = limited(-1) && sender_->send(chunks, 2, sent);
    if (sent < before) return ok && sent > 0 && sendPending(sent);
    clearPutArea();
    taken = sent - before;
    return ok;
}

StreamBuf::int_type StreamBuf::overflow(int_type c) {
    if (sendBuf_ == nullptr) return traits_type::eof();
    if (traits_type::eq_int_type(c, traits_type::eof())) return 0;   // no flush: that is for `sync` alone
    if (pptr() > epptr() && sync() != 0) return traits_type::eof();  // the reserve is taken since a failure
    *pptr() = traits_type::to_char_type(c);
    pbump(1);
    return sync();  // -1 although the character is kept; not the character, whatever it is
}

std::streamsize StreamBuf::xsputn(const char* s, std::streamsize n) {
    if (sendBuf_ == nullptr || n <= 0) return 0;
    const std::streamsize room = epptr() - pptr();
    if (room > n && n == clipped(n)) {
        std::memcpy(pptr(), s, static_cast<std::size_t>(n));
        pbump(static_cast<int>(n));
        return n;
    }
    // A buffer that is exactly full is not flushed: these bytes overtake it.
    std::streamsize total = 0;
    if (room > 0 && !sendPendingWith(s, n, total)) return 0;
    for (std::streamsize taken = -1; total < n && taken != 0; total += taken) taken = sendSome(s + total, n - total);
    return total;
}

StreamBuf::int_type StreamBuf::underflow() {
    if (recvBuf_ == nullptr) return traits_type::eof();
    if (unread() == 0) {
        const std::streamsize n = receiveSome(recvBuf_.get(), recvBufSize_);
        if (n == 0) return traits_type::eof();  // what was read before can still be put back
        setUnread(n);
    }
    return traits_type::to_int_type(*gptr());
}

std::streamsize StreamBuf::xsgetn(char* s, std::streamsize n) {
    if (recvBuf_ == nullptr || n <= 0) return 0;
    std::streamsize total = std::min(unread(), n);
    if (total > 0) std::memcpy(s, gptr(), static_cast<std::size_t>(total));
    setg(eback(), gptr() + total, egptr());
    for (std::streamsize taken = -1; total < n && taken != 0; total += taken) {
        taken = receiveSome(s + total, n - total);
        if (taken > 0) setUnread(0);  // what was read last is not in the buffer, so that nothing can be put back
    }
    return total;
}

// Asked only when nothing is unread; `dataAvail` adds that.
std::streamsize StreamBuf::showmanyc() {
    int count = 0;
    return protDataAvail(count) ? count : 0;
}

}  // namespace Varnex
