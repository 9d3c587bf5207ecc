#include <Varnex/hub/SendWriter.h>

#include <Varnex/hub/QueuedConnection.h>

#include <algorithm>

namespace Varnex {

SendWriter::~SendWriter() {
    stopping_ = true;
    wake();
    thread_.join();
}

void SendWriter::add(const Connection& connection) {
    const Zendro::MutexLock lock(mutex_);
    connections_.push_back(connection);
    changed_ = true;
}

void SendWriter::remove(const Connection& connection) {
    {
        const Zendro::MutexLock lock(mutex_);
        std::erase(connections_, connection);
        changed_ = true;
    }
    connection->detach();
    wake();  // a wait for room would keep the connection open on the wire
}

void SendWriter::wake() {
    ++calls_;
    if (asleep_ && asleep_.exchange(false)) wakeUp_.wake();
}

int SendWriter::main() {
    while (!stopping_) {
        const auto seen = calls_.load();
        if (changed_.exchange(false)) takeOver();
        await(serveAll(), seen);
    }
    return 0;
}

void SendWriter::takeOver() {
    const Zendro::MutexLock lock(mutex_);
    served_.clear();
    for (const Connection& each : connections_) served_.push_back({each});
}

/// One system call for each connection that may take something. True when one took it.
bool SendWriter::serveAll() {
    bool progress = false;
    for (Served& each : served_) {
        if (each.blocked) continue;
        const auto result = each.connection->serve();
        each.blocked = result == QueuedConnection::Progress::Blocked;
        progress |= result == QueuedConnection::Progress::Some;
    }
    return progress;
}

/// Looks which of the blocked connections have room again; without anything to do it sleeps until one has, or until it
/// is woken.
void SendWriter::await(bool progress, unsigned long long seen) {
    polled_.assign(1, {wakeUp_.readEnd(), POLLIN, 0});
    for (const Served& each : served_)
        if (each.blocked) polled_.push_back({each.connection->getDescriptor(), POLLOUT, 0});
    if (progress && polled_.size() == 1) return;

    asleep_ = !progress;
    const bool mayWait = !progress && calls_ == seen && !stopping_;
    const int ready = ::poll(polled_.data(), static_cast<nfds_t>(polled_.size()), mayWait ? -1 : 0);
    asleep_ = false;
    if (polled_[0].revents != 0) wakeUp_.consume();
    if (ready <= 0) return;
    auto state = polled_.begin() + 1;
    for (Served& each : served_)
        if (each.blocked) each.blocked = (state++)->revents == 0;
}

}  // namespace Varnex
