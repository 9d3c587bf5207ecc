#include <Varnex/hub/Redialler.h>

#include <Varnex/transport/PrintLine.h>

#include <algorithm>
#include <utility>

namespace Varnex {

void Redialler::setPauses(Milliseconds smallest, Milliseconds largest) {
    const Zendro::MutexLock lock(mutex_);
    smallest_ = std::max(smallest, Milliseconds(1));
    largest_ = std::max(largest, smallest_);
}

void Redialler::allow() {
    const Zendro::MutexLock lock(mutex_);
    allowed_ = true;
}

void Redialler::add(const std::string& host, unsigned short port) {
    const Zendro::MutexLock lock(mutex_);
    if (!allowed_ || stopping_) return;
    if (!running_) running_ = thread_.start();
    plans_[{host, port}] = {after(smallest_), smallest_};
    changed_.notify_all();
}

void Redialler::forget(const std::string& host, unsigned short port) {
    const Zendro::MutexLock lock(mutex_);
    plans_.erase({host, port});
}

void Redialler::stop() {
    clear(true);
    thread_.join();
    clear(false);  // its last dial may have succeeded
}

void Redialler::clear(bool stopping) {
    const Zendro::MutexLock lock(mutex_);
    stopping_ = stopping;
    allowed_ = running_ = false;
    plans_.clear();
    changed_.notify_all();
}

Redialler::Clock::time_point Redialler::after(Milliseconds pause) {
    const auto least = pause / 2;
    return Clock::now() +
           std::uniform_int_distribution<Milliseconds::rep>(least.count(), pause.count())(random_) * Milliseconds(1);
}

int Redialler::main() {
    mutex_.lock();
    while (running_) {
        const auto next = std::min_element(plans_.begin(), plans_.end(),
                                           [](const auto& a, const auto& b) { return a.second.next < b.second.next; });
        if (next == plans_.end()) {
            changed_.wait(mutex_);
        } else if (next->second.next > Clock::now()) {
            const auto time = next->second.next;  // the plan may go while waiting
            changed_.wait_until(mutex_, time);
        } else {
            const Server server = next->first;
            mutex_.unlock();
            dialAndPlan(server);
            mutex_.lock();
        }
    }
    mutex_.unlock();
    return 0;
}

void Redialler::dialAndPlan(const Server& server) {
    bool connected = false;
    try {
        connected = dial_(server.first, server.second);
    } catch (...) {
        printCaughtException();
    }
    const Zendro::MutexLock lock(mutex_);
    const auto plan = plans_.find(server);
    if (plan == plans_.end()) return;
    if (connected) {
        plans_.erase(plan);
        return;
    }
    plan->second.pause = std::min(2 * plan->second.pause, largest_);
    plan->second.next = after(plan->second.pause);
}

}  // namespace Varnex
