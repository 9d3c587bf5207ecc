#pragma once

#include <Zendro/Mutex.h>
#include <Zendro/ObjectThread.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <random>
#include <string>

namespace Varnex {

// Private to the library.

/// Dials lost servers again until they answer, each with pauses that double from a smallest to a largest one. Pauses
/// are shortened by up to half at random, so that many clients of one server do not come back at the same moment.
class Redialler {
public:
    using Milliseconds = std::chrono::milliseconds;
    /// True when the server at the host and port is connected now.
    using Dial = std::function<bool(const std::string& host, unsigned short port)>;

    explicit Redialler(Dial dial) : dial_(std::move(dial)), thread_(this, &Redialler::main) {}

    /// For servers that are lost from now on.
    void setPauses(Milliseconds smallest, Milliseconds largest) VARNEX_EXCLUDES(mutex_);

    /// From here on until `stop`, `add` does something.
    void allow() VARNEX_EXCLUDES(mutex_);
    void add(const std::string& host, unsigned short port) VARNEX_EXCLUDES(mutex_);
    void forget(const std::string& host, unsigned short port) VARNEX_EXCLUDES(mutex_);

    /// Forgets all and ends the thread; what the dial function blocks on is for the caller to end.
    void stop() VARNEX_EXCLUDES(mutex_);

private:
    using Clock = std::chrono::steady_clock;
    using Server = std::pair<std::string, unsigned short>;
    struct Plan {
        Clock::time_point next;
        Milliseconds pause;
    };

    int main();
    [[nodiscard]] Clock::time_point after(Milliseconds pause) VARNEX_REQUIRES(mutex_);
    void dialAndPlan(const Server& server);

    void clear(bool stopping) VARNEX_EXCLUDES(mutex_);

    Dial dial_;
    Zendro::Mutex mutex_;
    std::condition_variable_any changed_;
    std::map<Server, Plan> plans_ VARNEX_GUARDED_BY(mutex_);
    bool stopping_ VARNEX_GUARDED_BY(mutex_) = false;
    bool allowed_ VARNEX_GUARDED_BY(mutex_) = false;
    bool running_ VARNEX_GUARDED_BY(mutex_) = false;
    Milliseconds smallest_ VARNEX_GUARDED_BY(mutex_){0};
    Milliseconds largest_ VARNEX_GUARDED_BY(mutex_){0};
    std::minstd_rand random_ VARNEX_GUARDED_BY(mutex_){std::random_device{}()};
    Zendro::ObjectThread<Redialler> thread_;  // last: it uses the others
};

}  // namespace Varnex
