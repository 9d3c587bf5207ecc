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
/// go on doubling when a server hangs up soon after it was connected, and are shortened by up to half at random, so
/// that many clients of one server do not come back at the same moment.
class Redialler {
public:
    using Milliseconds = std::chrono::milliseconds;
    /// True when the server at the host and port is connected now.
    using Dial = std::function<bool(const std::string& host, unsigned short port)>;

    using GiveUp = std::function<void(const std::string& host, unsigned short port)>;

    /// `giveUp` is called for a server that was forgotten while it was dialled with success.
    Redialler(Dial dial, GiveUp giveUp)
        : dial_(std::move(dial)), giveUp_(std::move(giveUp)), thread_(this, &Redialler::main) {}

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
        bool isConnected = false;
        Clock::time_point next;  // to dial, or of the connection
        Milliseconds pause{0};   // of the last dial, none after the first loss
    };

    int main();
    void plan(Plan& plan) VARNEX_REQUIRES(mutex_);
    [[nodiscard]] std::map<Server, Plan>::iterator nextToDial() VARNEX_REQUIRES(mutex_);
    void dialAndPlan(const Server& server);

    void clear(bool stopping) VARNEX_EXCLUDES(mutex_);

    Dial dial_;
    GiveUp giveUp_;
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
