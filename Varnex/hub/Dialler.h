#pragma once

#include <Zendro/Mutex.h>
#include <Zendro/ObjectThread.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace Varnex {

// Private to the library.

/// Dials servers that announce themselves, and lost ones again until they answer.
///
/// A few at the same time, so that one that does not answer holds up no others. The pauses before a lost one is dialled
/// again double from a smallest to a largest, go on doubling when it hangs up soon after it was connected, and are
/// shortened by up to half at random, so that many clients of one server do not come back at the same moment.
class Dialler {
public:
    using Milliseconds = std::chrono::milliseconds;
    /// True when the server at the host and port is connected now.
    using Dial = std::function<bool(const std::string& host, unsigned short port)>;
    using GiveUp = std::function<void(const std::string& host, unsigned short port)>;

    static constexpr std::size_t kWorkers = 4;

    /// `giveUp` is called for a server that was forgotten while it was dialled with success.
    Dialler(Dial dial, GiveUp giveUp, std::size_t maxServers)
        : dial_(std::move(dial)), giveUp_(std::move(giveUp)), maxServers_(maxServers) {}
    ~Dialler();

    /// Lost servers are dialled again from now on.
    void setPauses(Milliseconds smallest, Milliseconds largest) VARNEX_EXCLUDES(mutex_);

    /// Servers that are dialled or may be dialled again; more are not taken up.
    void setMaxServers(std::size_t servers) VARNEX_EXCLUDES(mutex_);

    /// From here on until `stop`, the operations below do something.
    void allow() VARNEX_EXCLUDES(mutex_);
    /// Dials at once.
    void announced(const std::string& host, unsigned short port) VARNEX_EXCLUDES(mutex_);
    void lost(const std::string& host, unsigned short port) VARNEX_EXCLUDES(mutex_);
    void forget(const std::string& host, unsigned short port) VARNEX_EXCLUDES(mutex_);
    /// Takes a `forget` back: the application has connected to it, or found it connected.
    void wanted(const std::string& host, unsigned short port) VARNEX_EXCLUDES(mutex_);

    /// Forgets all and ends the threads; what the dial function blocks on is for the caller to end.
    void stop() VARNEX_EXCLUDES(mutex_);

private:
    using Clock = std::chrono::steady_clock;
    using Server = std::pair<std::string, unsigned short>;
    enum class State { Due, Dialling, Connected };
    struct Plan {
        State state = State::Due;
        Clock::time_point since;   // due, or connected
        Milliseconds pause{0};     // before the last dial
        bool wasLost = false;      // and so is dialled again
        bool isForgotten = false;  // while dialling
        bool isLostAgain = false;  // while dialling
    };
    using Plans = std::map<Server, Plan>;

    int work();
    [[nodiscard]] Plan* planFor(const Server& server) VARNEX_REQUIRES(mutex_);
    void startWorkers() VARNEX_REQUIRES(mutex_);
    void postpone(Plan& plan) VARNEX_REQUIRES(mutex_);
    [[nodiscard]] Plans::iterator nextDue() VARNEX_REQUIRES(mutex_);
    void dial(const Server& server) VARNEX_EXCLUDES(mutex_);
    [[nodiscard]] bool settle(const Server& server, bool connected) VARNEX_EXCLUDES(mutex_);

    Dial dial_;
    GiveUp giveUp_;
    Zendro::Mutex mutex_;
    std::condition_variable_any changed_;
    Plans plans_ VARNEX_GUARDED_BY(mutex_);
    bool allowed_ VARNEX_GUARDED_BY(mutex_) = false;
    std::size_t maxServers_ VARNEX_GUARDED_BY(mutex_);
    Milliseconds smallest_ VARNEX_GUARDED_BY(mutex_){0};
    Milliseconds largest_ VARNEX_GUARDED_BY(mutex_){0};  // 0: lost servers are let go
    std::minstd_rand random_ VARNEX_GUARDED_BY(mutex_){std::random_device{}()};
    std::vector<std::unique_ptr<Zendro::ObjectThread<Dialler>>> workers_ VARNEX_GUARDED_BY(mutex_);
};

}  // namespace Varnex
