#pragma once

#include <Varnex/transport/WakeUpPipe.h>

#include <Zendro/Mutex.h>
#include <Zendro/ObjectThread.h>

#include <atomic>
#include <memory>
#include <vector>

#include <poll.h>

namespace Varnex {

class QueuedConnection;

// Private to the library.

/// The thread that sends what waits in the queues of a hub, never waiting for any one connection.
class SendWriter {
public:
    using Connection = std::shared_ptr<QueuedConnection>;

    SendWriter() : thread_(this, &SendWriter::main) {}
    ~SendWriter();

    /// False when the system refuses a thread or a pipe.
    [[nodiscard]] bool start() { return wakeUp_.open() && thread_.start(); }

    void add(const Connection& connection) VARNEX_EXCLUDES(mutex_);
    /// On return the connection is not used any more.
    void remove(const Connection& connection) VARNEX_EXCLUDES(mutex_);

    /// Something waits. Any thread.
    void wake();

private:
    /// A connection as the thread sees it.
    struct Served {
        Connection connection;
        bool blocked = false;
    };

    int main();
    void takeOver() VARNEX_EXCLUDES(mutex_);
    bool serveAll();
    void await(bool progress, unsigned long long seen);

    Zendro::Mutex mutex_;
    std::vector<Connection> connections_ VARNEX_GUARDED_BY(mutex_);
    std::atomic<bool> changed_ = false;
    std::atomic<bool> stopping_ = false;
    std::atomic<bool> asleep_ = false;
    std::atomic<unsigned long long> calls_ = 0;
    WakeUpPipe wakeUp_;

    // The thread's own.
    std::vector<Served> served_;
    std::vector<pollfd> polled_;
    Zendro::ObjectThread<SendWriter> thread_;  // last: it uses the others
};

}  // namespace Varnex
