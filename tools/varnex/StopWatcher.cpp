#include "StopWatcher.h"

#include "Failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace VarnexTool {

namespace {

using Clock = std::chrono::steady_clock;

SteadyTime after(std::chrono::duration<double> time) {
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(time);
}

/// Waits until one of the descriptors (-1: none) is readable; false when the time comes first.
bool waitReadable(std::array<int, 3> descriptors, const SteadyTime* until) {
    std::array<pollfd, 3> polled{};
    for (std::size_t i = 0; i < polled.size(); ++i) polled[i] = {descriptors[i], POLLIN, 0};
    for (;;) {
        timespec rest{};
        if (until != nullptr) {
            const auto left = std::max(*until - Clock::now(), Clock::duration::zero());
            const auto whole = std::chrono::floor<std::chrono::seconds>(left);
            rest = {static_cast<time_t>(whole.count()), static_cast<long>((left - whole).count())};
        }
        const int ready = ::ppoll(polled.data(), polled.size(), until == nullptr ? nullptr : &rest, nullptr);
        if (ready >= 0 || errno != EINTR) return ready != 0;
    }
}

/// Those that the parent process did not tell us to ignore, as a shell does with its background jobs.
sigset_t stopSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM}) {
        struct sigaction action {};
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) ::sigaddset(&signals, signal);
    }
    return signals;
}

void raise(const Varnex::UniqueFd& event) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(event.get(), &one, sizeof one);  // a counter near 0 never refuses
}

}  // namespace

StopWatcher::StopWatcher(std::chrono::duration<double> limit, std::function<void()> onStop)
    : limit_(limit), onStop_(std::move(onStop)), thread_(this, &StopWatcher::watch) {
    const sigset_t signals = stopSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signals_ = Varnex::UniqueFd(::signalfd(-1, &signals, SFD_CLOEXEC));
    stopEvent_ = Varnex::UniqueFd(::eventfd(0, EFD_CLOEXEC));
    endEvent_ = Varnex::UniqueFd(::eventfd(0, EFD_CLOEXEC));
    const bool ready = signals_.isOpen() && stopEvent_.isOpen() && endEvent_.isOpen();
    if (!ready || !thread_.start()) throw Failure("cannot watch for signals");
}

StopWatcher::~StopWatcher() {
    raise(endEvent_);
    thread_.join();
}

void StopWatcher::stop() {
    if (stopped_.exchange(true)) return;
    raise(stopEvent_);
    if (onStop_) onStop_();
}

bool StopWatcher::sleepUntil(SteadyTime time) const {
    return !stopped_ && !waitReadable({stopEvent_.get(), -1, -1}, &time);
}

int StopWatcher::watch() {
    const SteadyTime end = after(limit_);
    waitReadable({signals_.get(), stopEvent_.get(), endEvent_.get()}, limit_.count() > 0 ? &end : nullptr);
    stop();
    const SteadyTime tooLate = after(kGrace);
    if (!waitReadable({endEvent_.get(), -1, -1}, &tooLate)) std::_Exit(EXIT_SUCCESS);
    return 0;
}

}  // namespace VarnexTool
