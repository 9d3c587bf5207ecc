// The consumer's side of the hub: who has data, in the order of arrival.

#include <Varnex/hub/CommThread.h>
#include <Varnex/hub/ConnectionEnd.h>
#include <Varnex/hub/ConnectionMonitor.h>
#include <Varnex/hub/MultiCommunicator.h>
#include <Varnex/transport/Communicator.h>

namespace Varnex {

bool MultiCommunicator::waitForCommunicators() {
    const Zendro::MutexLock lock(queueMutex_);
    handBack();
    while (readyQueue_.empty() && !breakFlag_) readyChanged_.wait(queueMutex_);
    const bool broken = breakFlag_;
    breakFlag_ = false;
    return !broken;
}

bool MultiCommunicator::receiveCommunicator(Communicator*& connection) {
    const Zendro::MutexLock lock(queueMutex_);
    handBack();
    while (readyQueue_.empty()) {
        breakFlag_ = false;  // spent: this wait does not end by it
        readyChanged_.wait(queueMutex_);
    }
    currentThread_ = readyQueue_.front();
    readyQueue_.pop_front();
    currentThread_->readyPosition_ = readyQueue_.end();
    connection = currentThread_->communicator_;
    return true;
}

bool MultiCommunicator::communicatorsAvail(int& count) {
    const Zendro::MutexLock lock(queueMutex_);
    handBack();
    count = static_cast<int>(readyQueue_.size());
    return true;
}

void MultiCommunicator::breakWait() {
    const Zendro::MutexLock lock(queueMutex_);
    breakFlag_ = true;
    readyChanged_.notify_all();
}

unsigned long long MultiCommunicator::getCurrentNumber() const {
    const Zendro::MutexLock lock(queueMutex_);
    return currentThread_ == nullptr ? 0 : currentThread_->number_;
}

/// Under the lock, so that the thread cannot go away meanwhile.
void MultiCommunicator::handBack() {
    if (currentThread_ != nullptr) currentThread_->resumeSemaphore_.up();
    currentThread_ = nullptr;
}

/// Queues a connection with data. False: it is being stopped.
bool MultiCommunicator::report(CommThread& thread) {
    const Zendro::MutexLock lock(queueMutex_);
    if (thread.stopping_) return false;
    thread.readyPosition_ = readyQueue_.insert(readyQueue_.end(), &thread);
    readyChanged_.notify_all();
    return true;
}

void MultiCommunicator::unqueue(CommThread& thread) {
    if (thread.readyPosition_ != readyQueue_.end()) readyQueue_.erase(thread.readyPosition_);
    thread.readyPosition_ = readyQueue_.end();
    if (currentThread_ == &thread) currentThread_ = nullptr;
}

/// True when the connection is at its end and the hub deletes it; the consumer never hears of it then.
bool MultiCommunicator::reportIfAtEnd(CommThread& thread) {
    if (!monitor_->isEnabled() || !isAtEnd(*thread.communicator_)) return false;
    reportLost(thread, LostReason::PeerClosed);
    return deleteLost_;
}

void MultiCommunicator::reportLost(CommThread& thread, LostReason reason) {
    {
        const Zendro::MutexLock lock(queueMutex_);
        if (thread.stopping_ || thread.lost_) return;
        thread.lost_ = true;
        reason = thread.reason_.value_or(reason);
    }
    monitor_->lost(thread.number_, thread.communicator_, reason);
}

}  // namespace Varnex
