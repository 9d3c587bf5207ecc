#include <Varnex/hub/ConnectionMonitor.h>

#include <Varnex/transport/PrintLine.h>

#include <algorithm>
#include <utility>

namespace Varnex {

ConnectionMonitor::~ConnectionMonitor() {
    stop();
}

void ConnectionMonitor::setConnectedCallback(MultiCommunicator::ConnectedCallback callback) {
    onConnected_ = std::move(callback);
    enable();
}

void ConnectionMonitor::setLostCallback(MultiCommunicator::LostCallback callback) {
    onLost_ = std::move(callback);
    enable();
}

void ConnectionMonitor::start() {
    if (!enabled_) return;
    const Zendro::MutexLock lock(mutex_);
    if (running_) return;
    thread_.join();  // an earlier run that ended while one of its callbacks ran
    running_ = thread_.start();
}

void ConnectionMonitor::stop() {
    {
        const Zendro::MutexLock lock(mutex_);
        running_ = false;
        changed_.notify_all();
    }
    thread_.join();
}

void ConnectionMonitor::connected(Communicator* connection) {
    News news;
    news.connection = connection;
    post(std::move(news));
}

void ConnectionMonitor::withdraw(const Communicator* connection) {
    const Zendro::MutexLock lock(mutex_);
    std::erase_if(news_, [=](const News& each) { return each.connection == connection; });
}

void ConnectionMonitor::lost(unsigned long long number, Communicator* connection, LostReason reason) {
    post({connection, true, reason, number, nullptr, false});
}

void ConnectionMonitor::dropped(unsigned long long number, std::unique_ptr<Communicator> connection, LostReason reason,
                                bool isKnown) {
    Communicator* const raw = connection.get();
    if (isKnown) {
        const Zendro::MutexLock lock(mutex_);
        const auto known = std::find_if(news_.begin(), news_.end(),
                                        [=](const News& each) { return each.isLost && each.number == number; });
        if (known != news_.end()) {
            known->owner = std::move(connection);
            return;
        }
    }
    post({raw, true, reason, number, std::move(connection), isKnown});
}

void ConnectionMonitor::post(News news) {
    const Zendro::MutexLock lock(mutex_);
    if (!running_) return;
    news_.push_back(std::move(news));
    changed_.notify_all();
}

int ConnectionMonitor::main() {
    mutex_.lock();
    while (running_ || !news_.empty()) {
        if (news_.empty()) {
            changed_.wait(mutex_);
            continue;
        }
        News next = std::move(news_.front());
        news_.pop_front();
        mutex_.unlock();
        try {
            tell(next);
        } catch (...) {
            printCaughtException();
        }
        next.owner.reset();
        mutex_.lock();
    }
    mutex_.unlock();
    return 0;
}

void ConnectionMonitor::tell(News& news) {
    if (!news.isLost) {
        if (onConnected_) onConnected_(news.connection);
        return;
    }
    if (news.owner == nullptr && hub_.deleteLost_) {
        // Removed meanwhile, it is somebody else's; in the consumer's hands, it is lost again later.
        if (!hub_.detachLost(news.number, news.reason)) return;
        news.owner.reset(news.connection);
        if (hub_.detachedHook_) hub_.detachedHook_(news.connection);
    }
    const bool isTold = news.isKnown && !hub_.deleteLost_;  // what the hub deletes was not told before
    if (onLost_ && !isTold) onLost_(news.connection, news.reason);
}

}  // namespace Varnex
