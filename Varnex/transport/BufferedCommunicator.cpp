#include <Varnex/transport/BufferedCommunicator.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace Varnex {

BufferedCommunicator::BufferedCommunicator(Communicator* inner, bool own, int bufferSize)
    : inner_(inner),
      owner_(own ? inner : nullptr),
      size_(std::max(bufferSize, 1)),
      buffer_(std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(size_))) {}

BufferedCommunicator::~BufferedCommunicator() = default;

bool BufferedCommunicator::close() {
    begin_ = end_ = 0;
    return inner_->close();
}

bool BufferedCommunicator::send(const void* data, int& n) {
    return inner_->send(data, n);
}

bool BufferedCommunicator::send(const Chunk* chunks, int count, int& sent) {
    return inner_->send(chunks, count, sent);
}

bool BufferedCommunicator::receive(void* data, int& n) {
    if (data == nullptr || n <= 0) return false;
    if (unread() == 0) {
        if (n >= size_) return inner_->receive(data, n);
        if (!fill()) return false;
    }
    n = std::min(n, unread());
    std::memcpy(data, buffer_.get() + begin_, static_cast<std::size_t>(n));
    begin_ += n;
    return true;
}

bool BufferedCommunicator::fill() {
    begin_ = end_ = 0;
    int n = size_;
    if (!inner_->receive(buffer_.get(), n)) return false;
    end_ = n;
    return true;
}

bool BufferedCommunicator::waitForData() {
    return waitForData(-1) == WaitData;
}

int BufferedCommunicator::waitForData(int ms) {
    const bool haveData = unread() > 0;
    if (haveData && wakeUps_.load(std::memory_order_acquire) == 0) return WaitData;
    const int result = inner_->waitForData(haveData ? 0 : ms);
    if (result == WaitBroken && wakeUps_.load(std::memory_order_acquire) > 0)
        wakeUps_.fetch_sub(1, std::memory_order_acq_rel);
    return haveData && result != WaitBroken ? WaitData : result;
}

void BufferedCommunicator::breakWait() {
    wakeUps_.fetch_add(1, std::memory_order_acq_rel);
    inner_->breakWait();
}

bool BufferedCommunicator::dataAvail(int& n) {
    int inner = 0;
    if (!inner_->dataAvail(inner)) {
        if (unread() == 0) return false;
        inner = 0;
    }
    n = inner > INT_MAX - unread() ? INT_MAX : inner + unread();
    return true;
}

}  // namespace Varnex
