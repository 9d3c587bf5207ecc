#include <Varnex/hub/Dialler.h>

#include <Varnex/transport/PrintLine.h>

#include <algorithm>
#include <utility>

namespace Varnex {

Dialler::~Dialler() {
    stop();
}

void Dialler::setPauses(Milliseconds smallest, Milliseconds largest) {
    const Zendro::MutexLock lock(mutex_);
    smallest_ = std::max(smallest, Milliseconds(1));
    largest_ = std::max(largest, smallest_);
}

void Dialler::setMaxServers(std::size_t servers) {
    const Zendro::MutexLock lock(mutex_);
    maxServers_ = servers;
}

void Dialler::allow() {
    const Zendro::MutexLock lock(mutex_);
    allowed_ = true;
}

void Dialler::announced(const std::string& host, unsigned short port) {
    const Zendro::MutexLock lock(mutex_);
    Plan* const plan = planFor({host, port});
    if (plan == nullptr || plan->state == State::Dialling) return;
    plan->state = State::Due;
    plan->since = Clock::now();
    changed_.notify_all();
}

void Dialler::lost(const std::string& host, unsigned short port) {
    const Zendro::MutexLock lock(mutex_);
    Plan* const plan = largest_.count() == 0 ? nullptr : planFor({host, port});
    if (plan == nullptr) return;
    plan->isLostAgain = plan->state == State::Dialling;
    if (plan->isLostAgain) return;  // by the time that dialling it is settled
    if (plan->state == State::Connected && Clock::now() - plan->since > largest_) plan->pause = Milliseconds(0);
    plan->wasLost = true;
    postpone(*plan);
    changed_.notify_all();
}

void Dialler::forget(const std::string& host, unsigned short port) {
    const Zendro::MutexLock lock(mutex_);
    const auto plan = plans_.find({host, port});
    if (plan == plans_.end()) return;
    plan->second.isForgotten = plan->second.state == State::Dialling;
    if (!plan->second.isForgotten) plans_.erase(plan);
}

void Dialler::wanted(const std::string& host, unsigned short port) {
    const Zendro::MutexLock lock(mutex_);
    if (const auto plan = plans_.find({host, port}); plan != plans_.end()) plan->second.isForgotten = false;
}

/// Null when no more can be taken up.
Dialler::Plan* Dialler::planFor(const Server& server) {
    if (!allowed_ || (plans_.size() >= maxServers_ && plans_.count(server) == 0)) return nullptr;
    startWorkers();
    return &plans_[server];
}

void Dialler::startWorkers() {
    while (workers_.size() < kWorkers) {
        auto worker = std::make_unique<Zendro::ObjectThread<Dialler>>(this, &Dialler::work);
        if (!worker->start()) return;
        workers_.push_back(std::move(worker));
    }
}

void Dialler::postpone(Plan& plan) {
    plan.state = State::Due;
    plan.pause = std::clamp(2 * plan.pause, smallest_, largest_);
    using Distribution = std::uniform_int_distribution<Milliseconds::rep>;
    plan.since = Clock::now() + Milliseconds(Distribution(plan.pause.count() / 2, plan.pause.count())(random_));
}

void Dialler::stop() {
    mutex_.lock();
    allowed_ = false;
    plans_.clear();
    const auto workers = std::exchange(workers_, {});
    changed_.notify_all();
    mutex_.unlock();
}  // the workers are joined here

Dialler::Plans::iterator Dialler::nextDue() {
    auto next = plans_.end();
    for (auto each = plans_.begin(); each != plans_.end(); ++each) {
        if (each->second.state != State::Due) continue;
        if (next == plans_.end() || each->second.since < next->second.since) next = each;
    }
    return next;
}

int Dialler::work() {
    mutex_.lock();
    while (allowed_) {
        const auto next = nextDue();
        if (next == plans_.end()) {
            changed_.wait(mutex_);
        } else if (next->second.since > Clock::now()) {
            const auto time = next->second.since;  // the plan may go while waiting
            changed_.wait_until(mutex_, time);
        } else {
            next->second.state = State::Dialling;
            const Server server = next->first;
            mutex_.unlock();
            dial(server);
            mutex_.lock();
        }
    }
    mutex_.unlock();
    return 0;
}

void Dialler::dial(const Server& server) {
    bool connected = false;
    try {
        connected = dial_(server.first, server.second);
    } catch (...) {
        printCaughtException();
    }
    if (!settle(server, connected)) giveUp_(server.first, server.second);
}

/// False when a server is connected that nobody wants any more.
bool Dialler::settle(const Server& server, bool connected) {
    const Zendro::MutexLock lock(mutex_);
    const auto plan = plans_.find(server);
    if (plan == plans_.end()) return true;  // stopped
    const bool isForgotten = plan->second.isForgotten;
    const bool isLostAgain = connected && std::exchange(plan->second.isLostAgain, false);
    if (isForgotten || (!connected && !plan->second.wasLost)) {
        plans_.erase(plan);
    } else if (connected && !isLostAgain) {
        plan->second.state = State::Connected;
        plan->second.since = Clock::now();
    } else {
        plan->second.wasLost = true;
        postpone(plan->second);
    }
    changed_.notify_all();
    return !(connected && isForgotten);
}

}  // namespace Varnex
