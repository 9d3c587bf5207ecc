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

MultiCommunicator::MultiCommunicator() : monitor_(std::make_unique<ConnectionMonitor>(*this)) {}

MultiCommunicator::~MultiCommunicator() {
    MultiCommunicator::close();
}

bool MultiCommunicator::open() {
    return true;
}

bool MultiCommunicator::close() {
    monitor_->stop();
    const Zendro::MutexLock lock(listMutex_);
    stopAll();
    for (CommThread* const each : std::exchange(commThreads_, {})) {
        const std::unique_ptr<Communicator> connection(each->getCommunicator());
        delete each;
    }
    writer_.reset();
    return true;
}

/// All at once, so that the threads end side by side.
void MultiCommunicator::stopAll() {
    for (CommThread* const each : commThreads_) each->requestStop();
}

bool MultiCommunicator::addCommunicator(Communicator* connection) {
    const Zendro::MutexLock lock(listMutex_);
    monitor_->start();
    monitor_->connected(connection);  // before its thread can report its loss
    commThreads_.push_back(createCommThread(this, connection));
    return true;
}

MultiCommunicator::CommThread* MultiCommunicator::createCommThread(MultiCommunicator* owner, Communicator* connection) {
    if (policy_.mode == SendPolicy::Queue)
        if (NonBlockingSender* const target = nonBlockingSenderOf(connection))
            return new QueuedCommThread(owner, connection, *target, policy_, writer());
    return new CommThread(owner, connection);
}

SendWriter& MultiCommunicator::writer() {
    if (writer_ == nullptr) writer_ = std::make_unique<SendWriter>();
    return *writer_;
}

void MultiCommunicator::removeCommunicator(Communicator* connection) {
    detach(connection);
}

bool MultiCommunicator::detach(const Communicator* connection, bool* wasLost) {
    return detachFirst([=](const CommThread& each) { return each.getCommunicator() == connection; }, wasLost);
}

template <class Matches>
bool MultiCommunicator::detachFirst(Matches matches, bool* wasLost) {
    const Zendro::MutexLock lock(listMutex_);
    const auto found =
        std::find_if(commThreads_.begin(), commThreads_.end(), [&](const CommThread* each) { return matches(*each); });
    if (found == commThreads_.end()) return false;
    if (wasLost != nullptr) *wasLost = (*found)->lost_;
    delete *found;
    commThreads_.erase(found);
    return true;
}

bool MultiCommunicator::detachLost(unsigned long long number) {
    return detachFirst([=](const CommThread& each) { return each.number_ == number; });
}

bool MultiCommunicator::dropCommunicator(Communicator* connection, LostReason reason) {
    bool wasLost = false;
    if (!detach(connection, &wasLost)) return false;
    if (detachedHook_) detachedHook_(connection);
    monitor_->dropped(std::unique_ptr<Communicator>(connection), reason, wasLost);
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
