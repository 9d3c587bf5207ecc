#include <Varnex/hub/SendQueue.h>

#include <Varnex/events/StateKey.h>

#include <algorithm>
#include <cstring>
#include <unordered_set>
#include <utility>

namespace Varnex {

namespace {

unsigned long long limit(int maximum) {
    return maximum <= 0 ? ~0ull : static_cast<unsigned long long>(maximum);
}

std::optional<std::string> keyOf(const QueuedMessage& message) {
    return stateKeyOf(message.data.get(), message.size);
}

}  // namespace

QueuedMessage::QueuedMessage(const void* bytes, int count) : size(count) {
    auto copy = std::make_shared_for_overwrite<char[]>(static_cast<std::size_t>(std::max(count, 1)));
    if (count > 0) std::memcpy(copy.get(), bytes, static_cast<std::size_t>(count));
    data = std::move(copy);
}

SendQueue::Verdict SendQueue::push(QueuedMessage message) {
    const Zendro::MutexLock lock(mutex_);
    if (!fits(message.size)) awaitLanding();
    counters_.offered.add(message.size);
    if (closed_) return refuse(message.size, Verdict::Closed);
    if (policy_.whenFull == SendPolicy::KeepNewest) {
        if (!conflating_ && !fits(message.size)) keepNewestOnly();
        if (conflating_ && replaceOlder(message)) return Verdict::Waiting;
    }
    if (!fits(message.size)) {
        if (policy_.whenFull == SendPolicy::Disconnect) return refuse(message.size, Verdict::Overflow);
        if (policy_.whenFull == SendPolicy::DropNewest || !couldFit(message.size))
            return refuse(message.size, Verdict::Dropped);
        while (!fits(message.size)) dropOldest();
    }
    append(std::move(message));
    return Verdict::Waiting;
}

SendQueue::Verdict SendQueue::refuse(int size, Verdict verdict) {
    counters_.dropped.add(size);
    return verdict;
}

/// What is being sent can neither be dropped nor replaced, and may make room itself at any moment.
void SendQueue::awaitLanding() {
    while (inFlight_) landed_.wait(mutex_);
}

bool SendQueue::fits(int size) const {
    return counters_.waiting.messages < limit(policy_.maxMessages) &&
           counters_.waiting.bytes + static_cast<unsigned long long>(size) <= limit(policy_.maxBytes);
}

/// Whether it would fit if everything were dropped that can be.
bool SendQueue::couldFit(int size) const {
    const auto kept = sending_.empty() ? 0 : static_cast<unsigned long long>(sending_.front().size);
    return sending_.size() < limit(policy_.maxMessages) &&
           kept + static_cast<unsigned long long>(size) <= limit(policy_.maxBytes);
}

void SendQueue::dropOldest() {
    const QueuedMessage& oldest = waiting_.front();
    drop(oldest.size);
    if (conflating_)
        if (const auto key = keyOf(oldest))
            if (const auto found = newest_.find(*key); found != newest_.end() && found->second == firstNumber_)
                newest_.erase(found);
    waiting_.pop_front();
    ++firstNumber_;
}

void SendQueue::append(QueuedMessage message) {
    if (conflating_)
        if (const auto key = keyOf(message)) newest_[*key] = firstNumber_ + waiting_.size();
    counters_.waiting.add(message.size);
    waiting_.push_back(std::move(message));
}

/// Puts the message in the place of an older one, where it is sent no later than that. False when there is none, or
/// when the place is too small.
bool SendQueue::replaceOlder(const QueuedMessage& message) {
    const auto key = keyOf(message);
    const auto found = key ? newest_.find(*key) : newest_.end();
    if (found == newest_.end() || found->second < firstNumber_) return false;  // none, or it is being sent
    QueuedMessage& older = waiting_[found->second - firstNumber_];
    const auto others = counters_.waiting.bytes - static_cast<unsigned long long>(older.size);
    if (others + static_cast<unsigned long long>(message.size) <= limit(policy_.maxBytes)) {
        drop(older.size);
        counters_.waiting.add(message.size);
        older = message;
        return true;
    }
    if (!couldFit(message.size)) return false;
    drop(older.size);
    waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(found->second - firstNumber_));
    const auto gone = found->second;
    newest_.erase(found);
    for (auto& [ignored, number] : newest_) number -= number > gone ? 1 : 0;
    return false;
}

void SendQueue::drop(int size) {
    counters_.waiting.remove(size);
    counters_.dropped.add(size);
}

/// Drops what there is a newer one of, from now on also as it comes.
void SendQueue::keepNewestOnly() {
    conflating_ = true;
    std::unordered_set<std::string> newer;
    std::deque<QueuedMessage> kept;
    for (auto message = waiting_.rbegin(); message != waiting_.rend(); ++message) {
        const auto key = keyOf(*message);
        if (!key || newer.insert(*key).second) {
            kept.push_front(std::move(*message));
            continue;
        }
        drop(message->size);
    }
    waiting_ = std::move(kept);
    for (std::size_t i = 0; i < waiting_.size(); ++i)
        if (const auto key = keyOf(waiting_[i])) newest_[*key] = firstNumber_ + i;
}

int SendQueue::next(Chunk* chunks, int max) {
    const Zendro::MutexLock lock(mutex_);
    const auto most = static_cast<std::size_t>(max);
    for (; sending_.size() < most && !waiting_.empty(); ++firstNumber_) {
        sending_.push_back(std::move(waiting_.front()));
        waiting_.pop_front();
    }
    std::transform(sending_.begin(), sending_.end(), chunks, [](const QueuedMessage& message) {
        return Chunk{message.data.get(), message.size};
    });
    inFlight_ = !sending_.empty();
    if (inFlight_) chunks[0] = {sending_.front().data.get() + begunBytes_, sending_.front().size - begunBytes_};
    return static_cast<int>(sending_.size());
}

void SendQueue::took(int bytes) {
    const Zendro::MutexLock lock(mutex_);
    inFlight_ = false;
    landed_.notify_all();
    if (closed_) return sending_.clear();
    while (!sending_.empty() && bytes >= sending_.front().size - begunBytes_) {
        bytes -= sending_.front().size - std::exchange(begunBytes_, 0);
        counters_.waiting.remove(sending_.front().size);
        counters_.sent.add(sending_.front().size);
        sending_.pop_front();
    }
    begunBytes_ += bytes;
    const std::size_t begun = begunBytes_ > 0 ? 1 : 0;
    for (auto number = firstNumber_; sending_.size() > begun; sending_.pop_back()) putBack(sending_.back(), --number);
    if (!waiting_.empty() || !conflating_) return;
    conflating_ = false;
    newest_.clear();
}

/// Before all that waits; `number` is the one that the message had there. Drops it when there is a newer one by now.
void SendQueue::putBack(QueuedMessage& message, unsigned long long number) {
    const auto key = conflating_ ? keyOf(message) : std::nullopt;
    const auto newest = key ? newest_.find(*key) : newest_.end();
    if (newest != newest_.end() && newest->second > number) return drop(message.size);
    waiting_.push_front(std::move(message));
    --firstNumber_;
    if (newest != newest_.end()) newest->second = firstNumber_;
}

void SendQueue::close() {
    const Zendro::MutexLock lock(mutex_);
    closed_ = true;
    counters_.dropped.messages += counters_.waiting.messages;
    counters_.dropped.bytes += counters_.waiting.bytes;
    counters_.waiting = {};
    waiting_.clear();
    newest_.clear();
    if (!inFlight_) sending_.clear();
}

SendCounters SendQueue::getCounters() const {
    const Zendro::MutexLock lock(mutex_);
    return counters_;
}

}  // namespace Varnex
