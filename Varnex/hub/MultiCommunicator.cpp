#include <Varnex/hub/MultiCommunicator.h>

#include <Varnex/hub/BroadcastScope.h>
#include <Varnex/hub/CommThread.h>
#include <Varnex/hub/ConnectionEnd.h>
#include <Varnex/hub/ConnectionMonitor.h>
#include <Varnex/hub/QueuedCommThread.h>
#include <Varnex/hub/SendWriter.h>
#include <Varnex/transport/Communicator.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace Varnex {

namespace {

/// Holds the list to change it. Busy senders look whether anybody waits for this: the mutex itself is not fair, and
/// would let them have it again and again.
class VARNEX_SCOPED_CAPABILITY ChangeLock {
public:
    ChangeLock(Zendro::Mutex& mutex, std::atomic<int>& waiting) VARNEX_ACQUIRE(mutex) : mutex_(mutex) {
        ++waiting;
        mutex_.lock();
        --waiting;
    }
    ~ChangeLock() VARNEX_RELEASE() { mutex_.unlock(); }
    ChangeLock(const ChangeLock&) = delete;
    ChangeLock& operator=(const ChangeLock&) = delete;

private:
    Zendro::Mutex& mutex_;
};

/// Not for ever: while another sender is blocked, nobody gets on.
void letChangersFirst(const std::atomic<int>& waiting) {
    constexpr int kPatience = 100;
    for (int i = 0; i < kPatience && waiting > 0; ++i) std::this_thread::yield();
}

}  // namespace

MultiCommunicator::MultiCommunicator() : monitor_(std::make_unique<ConnectionMonitor>(*this)) {}

MultiCommunicator::~MultiCommunicator() {
    MultiCommunicator::close();
}

bool MultiCommunicator::open() {
    return true;
}

bool MultiCommunicator::close() {
    {
        const ChangeLock lock(listMutex_, changers_);
        closing_ = true;
    }
    monitor_->stop();  // without the lock, which its callbacks may want
    const ChangeLock lock(listMutex_, changers_);
    stopAll();
    for (CommThread* const each : std::exchange(commThreads_, {})) {
        const std::unique_ptr<Communicator> connection(each->getCommunicator());
        delete each;
    }
    writer_.reset();
    closing_ = false;
    return true;
}

/// All at once, so that the threads end side by side.
void MultiCommunicator::stopAll() {
    for (CommThread* const each : commThreads_) each->requestStop();
}

bool MultiCommunicator::addCommunicator(Communicator* connection) {
    const ChangeLock lock(listMutex_, changers_);
    if (!closing_) monitor_->start();
    if (!closing_) monitor_->connected(connection);  // before its thread can report its loss
    try {
        commThreads_.push_back(createCommThread(this, connection));
    } catch (...) {
        monitor_->withdraw(connection);
        throw;
    }
    return true;
}

MultiCommunicator::CommThread* MultiCommunicator::createCommThread(MultiCommunicator* owner, Communicator* connection) {
    NonBlockingSender* const target = nonBlockingSenderOf(connection);
    if (policy_.mode == SendPolicy::Queue && target != nullptr && startWriter())
        return new QueuedCommThread(owner, connection, *target, policy_, *writer_);
    return new CommThread(owner, connection);
}

bool MultiCommunicator::startWriter() {
    if (writer_ != nullptr) return true;
    auto writer = std::make_unique<SendWriter>();
    if (writer->start()) writer_ = std::move(writer);
    return writer_ != nullptr;
}

void MultiCommunicator::removeCommunicator(Communicator* connection) {
    detach(connection);
}

bool MultiCommunicator::detach(const Communicator* connection) {
    const ChangeLock lock(listMutex_, changers_);
    return take(find(connection)).connection != nullptr;
}

MultiCommunicator::Connections::iterator MultiCommunicator::find(const Communicator* connection) {
    return std::find_if(commThreads_.begin(), commThreads_.end(),
                        [=](const CommThread* each) { return each->getCommunicator() == connection; });
}

MultiCommunicator::Connections::iterator MultiCommunicator::find(unsigned long long number) {
    return std::find_if(commThreads_.begin(), commThreads_.end(),
                        [=](const CommThread* each) { return each->number_ == number; });
}

/// Stops watching; an empty result when there is nothing at that place.
MultiCommunicator::Detached MultiCommunicator::take(Connections::iterator place) {
    if (place == commThreads_.end()) return {};
    const Detached taken{(*place)->getCommunicator(), (*place)->number_, (*place)->isLost()};
    delete *place;
    commThreads_.erase(place);
    return taken;
}

/// Takes a lost connection out, unless the consumer has it: then its end is reported once it is handed back.
bool MultiCommunicator::detachLost(unsigned long long number, LostReason reason) {
    const ChangeLock lock(listMutex_, changers_);
    const auto place = find(number);
    return place != commThreads_.end() && (*place)->retire(reason) && take(place).connection != nullptr;
}

bool MultiCommunicator::dropCommunicator(Communicator* connection, LostReason reason) {
    Detached taken;
    {
        const ChangeLock lock(listMutex_, changers_);
        taken = take(find(connection));
    }
    return give(taken, reason);
}

bool MultiCommunicator::dropNumber(unsigned long long number, LostReason reason) {
    Detached taken;
    {
        const ChangeLock lock(listMutex_, changers_);
        taken = take(find(number));
    }
    return give(taken, reason);
}

/// To the monitor, which tells and deletes.
bool MultiCommunicator::give(const Detached& taken, LostReason reason) {
    if (taken.connection == nullptr) return false;
    if (detachedHook_) detachedHook_(taken.connection);
    monitor_->dropped(taken.number, std::unique_ptr<Communicator>(taken.connection), reason, taken.wasLost);
    return true;
}

bool MultiCommunicator::send(const void* data, int& length) {
    return sendToSelected([](const CommThread&) { return true; }, data, length);
}

bool MultiCommunicator::send(const Chunk* chunks, int count, int& length) {
    std::vector<char> all;
    for (int i = 0; i < count; ++i) {
        const auto* const bytes = static_cast<const char*>(chunks[i].data);
        if (chunks[i].size > 0) all.insert(all.end(), bytes, bytes + chunks[i].size);
    }
    length = static_cast<int>(all.size());
    return send(all.data(), length);
}

bool MultiCommunicator::sendTo(const Communicator* connection, const void* data, int& length) {
    bool found = false;
    const auto selects = [&](const CommThread& each) {
        return !found && (found = each.getCommunicator() == connection);
    };
    return sendToSelected(selects, data, length) && found;
}

bool MultiCommunicator::sendToOthers(const Communicator* except, const void* data, int& length) {
    return sendToSelected([=](const CommThread& each) { return each.getCommunicator() != except; }, data, length);
}

template <class Selects>
bool MultiCommunicator::sendToSelected(Selects selects, const void* data, int& length) {
    const int requested = length;
    bool all = true;
    letChangersFirst(changers_);
    const Zendro::MutexLock lock(listMutex_);
    const BroadcastScope scope;
    for (CommThread* const each : commThreads_) {
        if (!selects(*each)) continue;
        int sent = requested;
        if (!each->send(data, sent)) all = false;
        length = std::min(length, sent);
    }
    return all;
}

void MultiCommunicator::setSendPolicy(const SendPolicy& policy) {
    const Zendro::MutexLock lock(listMutex_);
    policy_ = policy;
}

bool MultiCommunicator::flush(int ms) {
    constexpr std::chrono::milliseconds kLookAgain{1};
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    const auto waits = [](const ConnectionStatus& each) { return each.counters.waiting.messages > 0; };
    for (;;) {
        const auto all = getStatus();
        if (std::none_of(all.begin(), all.end(), waits)) return true;
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(kLookAgain);
    }
}

std::vector<MultiCommunicator::ConnectionStatus> MultiCommunicator::getStatus() const {
    const Zendro::MutexLock lock(listMutex_);
    std::vector<ConnectionStatus> all;
    all.reserve(commThreads_.size());
    for (const CommThread* const each : commThreads_)
        all.push_back({each->getCommunicator(), each->number_, each->getSendCounters()});
    return all;
}

int MultiCommunicator::getCount() const {
    const Zendro::MutexLock lock(listMutex_);
    return static_cast<int>(commThreads_.size());
}

void MultiCommunicator::setDeleteLost(bool on) {
    deleteLost_ = on;
    if (on) monitor_->enable();
}

void MultiCommunicator::setConnectedCallback(ConnectedCallback callback) {
    monitor_->setConnectedCallback(std::move(callback));
}

void MultiCommunicator::setLostCallback(LostCallback callback) {
    monitor_->setLostCallback(std::move(callback));
}

void MultiCommunicator::setDetachedHook(std::function<void(Communicator*)> hook) {
    detachedHook_ = std::move(hook);
}

}  // namespace Varnex
