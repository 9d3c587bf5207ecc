#include <Varnex/web/WebConnection.h>

#include <Varnex/transport/PollReadable.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/RemainingChunks.h>
#include <Varnex/transport/SystemError.h>
#include <Varnex/transport/WaitForData.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <utility>

#include <sys/socket.h>

namespace Varnex {

namespace {

constexpr WaitMessages kWaitMessages{"ERROR: Cannot create event", &printOutput};
constexpr std::chrono::milliseconds kLingerTime{1000};
constexpr long kLingerBytes = 65536;
constexpr int kBlocksAtOnce = 16;

using Clock = std::chrono::steady_clock;

int millisecondsUntil(Clock::time_point end) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    return std::max(0, static_cast<int>(left.count()));
}

bool sendFailed(long outcome) {
    if (outcome == Wire::Failed) printError(withErrno("ERROR: Cannot send", errno));
    if (outcome == Wire::TimedOut) printError(withErrno("ERROR: Cannot send", EAGAIN));
    return false;
}

}  // namespace

WebConnection::WebConnection(std::unique_ptr<Client> socket, std::unique_ptr<Wire> wire, Sending sending,
                             int sendTimeoutMs)
    : socket_(std::move(socket)), wire_(std::move(wire)), sending_(sending), sendTimeoutMs_(sendTimeoutMs) {}

WebConnection::~WebConnection() = default;

bool WebConnection::close() {
    if (socket_->isOpen()) wire_->finish();
    begin_ = end_ = 0;
    const Zendro::MutexLock lock(closing_);
    return socket_->close();
}

void WebConnection::abort() {
    const Zendro::MutexLock lock(closing_);
    if (socket_->isOpen()) socket_->abort();
}

void WebConnection::breakWait() {
    if (takenOver_) return Varnex::breakWait(wakeUp_, kWaitMessages);
    const Zendro::MutexLock lock(closing_);
    if (socket_->isOpen()) ::shutdown(socket_->getDescriptor(), SHUT_RD);
}

void WebConnection::takeOver() {
    takenOver_ = true;
    isReadable_ = true;
    sending_ = Sending::Waits;
    while (hasQueued() && refillQueue() && !queue_.empty()) {
        int n = static_cast<int>(queue_.size() - sent_);
        if (!send(queue_.data() + sent_, n)) break;
        queue_.clear();
        sent_ = 0;
    }
}

bool WebConnection::waitForData() {
    return waitForData(-1) == WaitData;
}

int WebConnection::waitForData(int ms) {
    if (begin_ < end_ || ended_) return WaitData;
    if (!socket_->isOpen()) return WaitFailed;
    if (takenOver_ && !wire_->hasPending()) return waitInterruptibly(ms);
    if (ms == 0 && sending_ == Sending::Queues && !hasPending()) return WaitTimedOut;
    return fill(ms);
}

/// What is there may still be no data: a part of an encrypted piece.
int WebConnection::waitInterruptibly(int ms) {
    const auto end = Clock::now() + std::chrono::milliseconds(ms);
    for (int left = ms;; left = ms < 0 ? ms : millisecondsUntil(end)) {
        int result = Varnex::waitForData(socket_->getDescriptor(), wakeUp_, left, 0, kWaitMessages);
        if (result == WaitData)
            result = fill(0);
        else if (result == WaitTimedOut)
            return result;
        if (result != WaitTimedOut) return result;
    }
}

/// Receives what there is within the time. The buffer is empty.
int WebConnection::fill(int ms) {
    if (buffer_ == nullptr) buffer_ = std::make_unique_for_overwrite<char[]>(kReceiveSize);
    const long n = wire_->receive(buffer_.get(), kReceiveSize, ms);
    if (n == Wire::Failed) return WaitFailed;
    isReadable_ = n == kReceiveSize;
    if (n == Wire::TimedOut) return WaitTimedOut;
    begin_ = 0;
    end_ = static_cast<int>(n);
    ended_ = n == 0;
    return WaitData;
}

bool WebConnection::dataAvail(int& n) {
    n = end_ - begin_;
    return socket_->isOpen();
}

bool WebConnection::receive(void* data, int& n) {
    if (data == nullptr || n <= 0 || waitForData(-1) != WaitData) return false;
    n = std::min(n, end_ - begin_);
    if (n > 0) std::memcpy(data, buffer_.get() + begin_, static_cast<std::size_t>(n));
    begin_ += n;
    return true;
}

bool WebConnection::send(const void* data, int& n) {
    const Chunk chunk{data, n};
    return data != nullptr && n >= 0 && send(&chunk, 1, n);
}

bool WebConnection::send(const Chunk* chunks, int count, int& sent) {
    sent = 0;
    if (!socket_->isOpen()) return false;
    if (count == 1 && !hasQueued()) return sendOne(*chunks, sent);
    return sending_ == Sending::Waits ? sendWaiting(chunks, count, sent) : sendQueueing(chunks, count, sent);
}

/// Mostly all of it goes out at once.
bool WebConnection::sendOne(const Chunk& chunk, int& sent) {
    const bool waits = sending_ == Sending::Waits;
    const long taken = wire_->send(&chunk, 1, waits ? sendTimeoutMs_ : 0);
    if (taken == Wire::Failed || (taken == Wire::TimedOut && waits)) return sendFailed(taken);
    sent = static_cast<int>(std::max(taken, 0L));
    if (sent == chunk.size) return true;
    const Chunk rest{static_cast<const char*>(chunk.data) + sent, chunk.size - sent};
    int more = 0;
    const bool ok = waits ? sendWaiting(&rest, 1, more) : sendQueueing(&rest, 1, more);
    sent += more;
    return ok;
}

bool WebConnection::sendWaiting(const Chunk* chunks, int count, int& sent) {
    RemainingChunks rest(chunks, count);
    while (!rest.empty()) {
        const long taken = wire_->send(rest.data(), rest.count(), sendTimeoutMs_);
        if (taken < 0) return sendFailed(taken);
        sent += static_cast<int>(taken);
        rest.advance(static_cast<unsigned long>(taken));
    }
    return true;
}

bool WebConnection::sendQueueing(const Chunk* chunks, int count, int& sent) {
    RemainingChunks rest(chunks, count);
    const long taken = hasQueued() ? 0 : wire_->send(rest.data(), rest.count(), 0);
    if (taken == Wire::Failed) return sendFailed(taken);
    rest.advance(static_cast<unsigned long>(std::max(taken, 0L)));
    for (int i = 0; i < rest.count(); ++i)
        queue_.append(static_cast<const char*>(rest.data()[i].data), static_cast<std::size_t>(rest.data()[i].size));
    for (int i = 0; i < count; ++i) sent += chunks[i].size;
    return true;
}

bool WebConnection::send(FileBody body) {
    file_ = std::move(body);
    bool progress = true;
    if (sending_ == Sending::Queues) return sendQueued(progress);
    while (refillQueue() && !queue_.empty()) {
        int n = static_cast<int>(queue_.size());
        if (!send(queue_.data(), n)) return false;
        queue_.clear();
    }
    return !file_.has_value();
}

/// Reads the next block of the file when everything before it has gone. False: the file is too short.
bool WebConnection::refillQueue() {
    if (sent_ < queue_.size() || !file_) return true;
    sent_ = 0;
    queue_.resize(kFileBlock);
    const long n = file_->read(queue_.data(), queue_.size());
    queue_.resize(static_cast<std::size_t>(std::max(n, 0L)));
    if (n == 0) file_.reset();
    return n >= 0;
}

bool WebConnection::sendQueued(bool& progress) {
    for (int block = 0; refillQueue(); ++block) {
        if (block == kBlocksAtOnce) return true;  // others wait, too
        if (sent_ == queue_.size()) {
            queue_ = {};
            sent_ = 0;
            return true;
        }
        const Chunk rest{queue_.data() + sent_,
                         static_cast<int>(std::min<std::size_t>(queue_.size() - sent_, INT_MAX))};
        const long taken = wire_->send(&rest, 1, 0);
        if (taken == Wire::Failed) return sendFailed(taken);
        if (taken == Wire::TimedOut) return true;
        sent_ += static_cast<std::size_t>(taken);
        progress = true;
    }
    return false;
}

void WebConnection::linger() {
    if (!socket_->isOpen() || !socket_->shutdownSend()) return;
    const auto end = Clock::now() + kLingerTime;
    char dropped[4096];
    for (long n = 1, total = 0; n > 0 && total < kLingerBytes; total += n) {
        const int left = millisecondsUntil(end);
        if (left == 0 || pollReadable(getDescriptor(), left) <= 0) return;
        n = ::recv(getDescriptor(), dropped, sizeof dropped, MSG_DONTWAIT);
    }
}

}  // namespace Varnex
