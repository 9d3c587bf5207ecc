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
    Plan& known = plans_[{host, port}];
    if (known.isConnected && Clock::now() - known.next > largest_) known.pause = Milliseconds(0);  // it had settled
    plan(known);
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

void Redialler::plan(Plan& plan) {
    plan.isConnected = false;
    plan.pause = std::clamp(2 * plan.pause, smallest_, largest_);
    using Distribution = std::uniform_int_distribution<Milliseconds::rep>;
    plan.next = Clock::now() + Milliseconds(Distribution(plan.pause.count() / 2, plan.pause.count())(random_));
}

std::map<Redialler::Server, Redialler::Plan>::iterator Redialler::nextToDial() {
    auto next = plans_.end();
    for (auto each = plans_.begin(); each != plans_.end(); ++each)
        if (!each->second.isConnected && (next == plans_.end() || each->second.next < next->second.next)) next = each;
    return next;
}

int Redialler::main() {
    mutex_.lock();
    while (running_) {
        const auto next = nextToDial();
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
    mutex_.lock();
    const auto known = plans_.find(server);
    const bool isWanted = known != plans_.end();
    if (isWanted && !connected) plan(known->second);
    if (isWanted && connected) known->second.isConnected = true;
    if (isWanted && connected) known->second.next = Clock::now();
    const bool stopping = stopping_;
    mutex_.unlock();
    if (connected && !isWanted && !stopping) giveUp_(server.first, server.second);
}

}  // namespace Varnex
