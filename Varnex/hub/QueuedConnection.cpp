#include <Varnex/hub/QueuedConnection.h>

#include <Varnex/transport/NonBlockingSender.h>
#include <Varnex/transport/PrintLine.h>

#include <algorithm>
#include <array>
#include <utility>

namespace Varnex {

QueuedConnection::QueuedConnection(NonBlockingSender& target, const SendPolicy& policy,
                                   std::function<void(LostReason)> onGivenUp)
    : queue_(policy), onGivenUp_(std::move(onGivenUp)), target_(&target) {}

bool QueuedConnection::push(QueuedMessage message) {
    const auto verdict = queue_.push(std::move(message));
    if (verdict == SendQueue::Verdict::Overflow) giveUp(LostReason::QueueFull);
    return verdict == SendQueue::Verdict::Waiting || verdict == SendQueue::Verdict::Dropped;
}

QueuedConnection::Progress QueuedConnection::serve() {
    const Zendro::MutexLock lock(serving_);
    if (target_ == nullptr) return Progress::Nothing;
    std::array<Chunk, kMaxChunks> chunks;
    const int count = queue_.next(chunks.data(), kMaxChunks);
    if (count == 0) return Progress::Nothing;
    int sent = 0;
    bool alive = false;
    try {
        alive = target_->trySend(chunks.data(), count, sent);
    } catch (...) {
        printCaughtException();
    }
    queue_.took(std::max(sent, 0));
    if (alive) return sent > 0 ? Progress::Some : Progress::Blocked;
    giveUp(LostReason::SendFailed);
    return Progress::Nothing;
}

void QueuedConnection::giveUp(LostReason reason) {
    queue_.close();
    if (givenUp_.exchange(true)) return;
    onGivenUp_(reason);
    target_->abort();
}

void QueuedConnection::detach() {
    queue_.close();
    const Zendro::MutexLock lock(serving_);
    target_ = nullptr;
}

int QueuedConnection::getDescriptor() {
    const Zendro::MutexLock lock(serving_);
    return target_ == nullptr ? -1 : target_->getSendDescriptor();
}

}  // namespace Varnex
