#include <Varnex/hub/CommThread.h>

#include <Varnex/transport/Communicator.h>
#include <Varnex/transport/PrintLine.h>

#include <chrono>

namespace Varnex {

namespace {

/// A reader that should not be there may have taken the wake-up; then another one is due.
constexpr std::chrono::seconds kBreakAgain{1};

}  // namespace

MultiCommunicator::CommThread::CommThread(MultiCommunicator* owner, Communicator* connection)
    : owner_(owner), communicator_(connection), number_(++owner->lastNumber_), thread_(this, &CommThread::recvThread) {
    bool started = false;
    {
        const Zendro::MutexLock lock(owner_->queueMutex_);
        readyPosition_ = owner_->readyQueue_.end();
        started = thread_.start();
        ended_ = !started;
    }
    if (!started) reportLost(LostReason::ReceiveFailed);
}

MultiCommunicator::CommThread::~CommThread() {
    requestStop();
    awaitEnd();
    thread_.join();
    // The thread may have ended by itself just before it was told to: the connection keeps no wake-up of ours.
    while (breaks_-- > 0 && communicator_->waitForData(0) == Receiver::WaitBroken) {
    }
}

bool MultiCommunicator::CommThread::send(const void* data, int& length) {
    const int offered = length;
    counters_.offered.add(offered);
    bool sent = false;
    try {
        sent = communicator_->send(data, length);
    } catch (...) {
        printCaughtException();
    }
    (sent && length == offered ? counters_.sent : counters_.dropped).add(offered);
    return sent;
}

void MultiCommunicator::CommThread::reportLost(LostReason reason) {
    owner_->reportLost(*this, reason);
}

int MultiCommunicator::CommThread::recvThread() {
    struct End {
        CommThread& thread;
        ~End() {
            const Zendro::MutexLock lock(thread.owner_->queueMutex_);
            thread.ended_ = true;
            thread.owner_->threadEnded_.notify_all();
        }
    } const end{*this};

    try {
        while (communicator_->waitForData()) {
            if (owner_->reportIfAtEnd(*this)) return 0;
            // While stopping, a wake-up is on its way to the next wait.
            if (owner_->report(*this)) resumeSemaphore_.down();
        }
    } catch (...) {
        printCaughtException();
    }
    reportLost(LostReason::ReceiveFailed);
    return 0;
}

bool MultiCommunicator::CommThread::retire(LostReason reason) {
    const Zendro::MutexLock lock(owner_->queueMutex_);
    if (owner_->currentThread_ == this) {
        reason_ = reason;
        lost_ = false;
        return false;
    }
    owner_->unqueue(*this);
    stopping_ = true;  // so that the consumer cannot get it any more
    return true;
}

bool MultiCommunicator::CommThread::isLost() {
    requestStop();  // from here on it stays as it is
    const Zendro::MutexLock lock(owner_->queueMutex_);
    return lost_;
}

void MultiCommunicator::CommThread::requestStop() {
    {
        const Zendro::MutexLock lock(owner_->queueMutex_);
        owner_->unqueue(*this);
        stopping_ = true;
        if (stopRequested_) return;
        stopRequested_ = true;
        if (ended_) return;
    }
    communicator_->breakWait();
    ++breaks_;
    resumeSemaphore_.up();
}

void MultiCommunicator::CommThread::awaitEnd() {
    const Zendro::MutexLock lock(owner_->queueMutex_);
    while (!ended_) {
        if (owner_->threadEnded_.wait_for(owner_->queueMutex_, kBreakAgain) == std::cv_status::no_timeout) continue;
        communicator_->breakWait();
        ++breaks_;
    }
}

}  // namespace Varnex
