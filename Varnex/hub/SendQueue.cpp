#include <Varnex/hub/SendQueue.h>

#include <Varnex/events/StateKey.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace Varnex {

QueuedMessage::QueuedMessage(const void* bytes, int count) : size(count) {
    auto copy = std::make_shared_for_overwrite<char[]>(static_cast<std::size_t>(std::max(count, 1)));
    if (count > 0) std::memcpy(copy.get(), bytes, static_cast<std::size_t>(count));
    data = std::move(copy);
}

SendQueue::Verdict SendQueue::push(QueuedMessage message) {
    const Zendro::MutexLock lock(mutex_);
    counters_.offered.add(message.size);
    if (!fits(message.size)) awaitLanding();
    if (closed_) return refuse(message.size, Verdict::Closed);
    const bool keepNewest = policy_.whenFull == SendPolicy::KeepNewest;
    if (keepNewest && !conflating_ && !fits(message.size)) keepNewestOnly();
    if (conflating_ && replaceOlder(message)) return Verdict::Waiting;
    if (!fits(message.size)) {
        if (policy_.whenFull == SendPolicy::Disconnect) return refuse(message.size, Verdict::Overflow);
        if (policy_.whenFull == SendPolicy::DropNewest || !makeRoom(message.size))
            return refuse(message.size, Verdict::Dropped);
    }
    append(std::move(message));
    return Verdict::Waiting;
}

/// What is being sent can neither be dropped nor replaced, and may make room itself at any moment.
void SendQueue::awaitLanding() {
    while (inFlight_) landed_.wait(mutex_);
}

SendQueue::Verdict SendQueue::refuse(int size, Verdict verdict) {
    counters_.dropped.add(size);
    return verdict;
}

bool SendQueue::fits(int size) const {
    const auto& waiting = counters_.waiting;
    const bool messagesFit =
        policy_.maxMessages <= 0 || waiting.messages < static_cast<unsigned long long>(policy_.maxMessages);
    const bool bytesFit = policy_.maxBytes <= 0 || waiting.bytes + static_cast<unsigned long long>(size) <=
                                                       static_cast<unsigned long long>(policy_.maxBytes);
    return messagesFit && bytesFit;
}

/// Drops the oldest, but nothing when even an empty queue would not do.
bool SendQueue::makeRoom(int size) {
    if (policy_.maxBytes > 0 && size > policy_.maxBytes) return false;
    while (!fits(size)) {
        oldest_ = std::max(oldest_, begun_);
        if (oldest_ >= messages_.size()) return false;
        dropOldest();
    }
    return true;
}

void SendQueue::dropOldest() {
    drop(messages_[oldest_]);
    if (oldest_ == 0)
        popFront();
    else
        ++oldest_;
}

void SendQueue::drop(QueuedMessage& message) {
    if (message.data == nullptr) return;
    counters_.waiting.remove(message.size);
    counters_.dropped.add(message.size);
    message = QueuedMessage();
}

void SendQueue::popFront() {
    messages_.pop_front();
    ++popped_;
    if (oldest_ > 0) --oldest_;
}

void SendQueue::append(QueuedMessage message) {
    if (conflating_)
        if (const auto key = stateKeyOf(message.data.get(), message.size)) newest_[*key] = popped_ + messages_.size();
    counters_.waiting.add(message.size);
    messages_.push_back(std::move(message));
}

/// Puts the message in the place of an older one, where it is sent no later than that. False when there is none, or
/// when the place is too small.
bool SendQueue::replaceOlder(const QueuedMessage& message) {
    const auto key = stateKeyOf(message.data.get(), message.size);
    const auto found = key ? newest_.find(*key) : newest_.end();
    if (found == newest_.end() || found->second < popped_ + begun_) return false;
    QueuedMessage& older = messages_[found->second - popped_];
    drop(older);
    if (!fits(message.size)) return false;
    older = message;
    counters_.waiting.add(message.size);
    return true;
}

/// Drops what there is a newer one of, from now on also as it comes.
void SendQueue::keepNewestOnly() {
    conflating_ = true;
    for (std::size_t i = messages_.size(); i-- > begun_;) {
        QueuedMessage& message = messages_[i];
        const auto key = message.data == nullptr ? std::nullopt : stateKeyOf(message.data.get(), message.size);
        if (key && !newest_.emplace(*key, popped_ + i).second) drop(message);
    }
}

int SendQueue::next(Chunk* chunks, int max) {
    const Zendro::MutexLock lock(mutex_);
    int count = 0;
    begun_ = 0;
    for (const QueuedMessage& message : messages_) {
        if (count == max) break;
        ++begun_;
        if (message.data != nullptr) chunks[count++] = {message.data.get(), message.size};
    }
    inFlight_ = count > 0;
    if (count > 0 && frontSent_ > 0)
        chunks[0] = {messages_.front().data.get() + frontSent_, chunks[0].size - frontSent_};
    return count;
}

void SendQueue::took(int bytes) {
    const Zendro::MutexLock lock(mutex_);
    inFlight_ = false;
    landed_.notify_all();
    doomed_.clear();
    for (; begun_ > 0 && !messages_.empty(); --begun_) {
        const QueuedMessage& front = messages_.front();
        const int rest = front.size - frontSent_;
        if (bytes < rest) break;
        bytes -= rest;
        frontSent_ = 0;
        if (front.data != nullptr) {
            counters_.waiting.remove(front.size);
            counters_.sent.add(front.size);
        }
        popFront();
    }
    if (closed_) return;
    frontSent_ += bytes;
    begun_ = frontSent_ > 0 ? 1 : 0;
    oldest_ = 0;
    if (!messages_.empty() || !conflating_) return;
    conflating_ = false;
    newest_.clear();
}

void SendQueue::close() {
    const Zendro::MutexLock lock(mutex_);
    closed_ = true;
    counters_.dropped.messages += counters_.waiting.messages;
    counters_.dropped.bytes += counters_.waiting.bytes;
    counters_.waiting = {};
    doomed_ = std::move(messages_);
    messages_.clear();
    newest_.clear();
}

SendCounters SendQueue::getCounters() const {
    const Zendro::MutexLock lock(mutex_);
    return counters_;
}

}  // namespace Varnex
