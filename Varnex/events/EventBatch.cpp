#include <Varnex/events/EventBatch.h>

#include <Varnex/events/Event.h>
#include <Varnex/transport/Sender.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <utility>

namespace Varnex {

namespace {

constexpr int kFirstCapacity = 16384;

}  // namespace

bool EventBatch::add(Event& event) {
    if (!reserve(Event::kFirstBufferSize)) return false;
    char* const room = buffer_.get() + used_;
    const Event::Buffer buffer(event, room, capacity_ - used_, true);
    const int length = event.write();
    if (length <= 0 || !event._valid || !wouldFit(length)) return false;
    if (event._buffer != room) {  // it outgrew the room and took a buffer of its own
        if (!reserve(length)) return false;
        std::memcpy(buffer_.get() + used_, event._buffer, static_cast<std::size_t>(length));
    }
    used_ += length;
    ++count_;
    return true;
}

bool EventBatch::send(Sender* sender) {
    int n = used_;
    if (n > 0 && !(sender->send(buffer_.get(), n) && n == used_)) return false;
    clear();
    return true;
}

void EventBatch::clear() {
    used_ = 0;
    count_ = 0;
}

/// Makes room for `bytes` more. False when there is no memory for it.
bool EventBatch::reserve(int bytes) {
    if (capacity_ - used_ >= bytes) return true;
    const long long needed = static_cast<long long>(used_) + bytes;
    if (needed > INT_MAX) return false;
    const long long size = std::min<long long>(INT_MAX, std::max<long long>({kFirstCapacity, 2LL * capacity_, needed}));
    std::unique_ptr<char[]> bigger(new (std::nothrow) char[static_cast<std::size_t>(size)]);
    if (bigger == nullptr) return false;
    if (used_ > 0) std::memcpy(bigger.get(), buffer_.get(), static_cast<std::size_t>(used_));
    buffer_ = std::move(bigger);
    capacity_ = static_cast<int>(size);
    return true;
}

bool EventBatch::wouldFit(int bytes) const {
    const int limit = maxBytes_ > 0 ? maxBytes_ : INT_MAX;
    return bytes <= limit - used_;
}

}  // namespace Varnex
