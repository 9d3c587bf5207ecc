#include <Varnex/transport/PollReadable.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

namespace Varnex {

namespace {

using Clock = std::chrono::steady_clock;

int millisecondsUntil(Clock::time_point end) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    return std::max(0, static_cast<int>(left.count()));
}

int pollWithoutInterruption(std::span<pollfd> descriptors, int ms) {
    const auto count = static_cast<nfds_t>(descriptors.size());
    const bool limited = ms > 0;
    const auto end = limited ? Clock::now() + std::chrono::milliseconds(ms) : Clock::time_point();
    int ready = ::poll(descriptors.data(), count, ms);
    while (ready < 0 && errno == EINTR)
        ready = ::poll(descriptors.data(), count, limited ? millisecondsUntil(end) : ms);
    return ready;
}

int fail(int error) {
    errno = error;
    return -1;
}

bool isInvalid(const pollfd& descriptor) {
    return descriptor.fd < 0 || (descriptor.revents & POLLNVAL) != 0;
}

}  // namespace

int pollDescriptors(std::span<pollfd> descriptors, int ms) {
    if (ms < kNoTimeLimit) return fail(EINVAL);
    if (std::any_of(descriptors.begin(), descriptors.end(), [](const pollfd& d) { return d.fd < 0; }))
        return fail(EBADF);
    const int ready = pollWithoutInterruption(descriptors, ms);
    if (ready > 0 && std::any_of(descriptors.begin(), descriptors.end(), isInvalid)) return fail(EBADF);
    return ready;
}

int pollReadable(int fd, int ms) {
    pollfd descriptor{fd, POLLIN, 0};
    return pollDescriptors({&descriptor, 1}, ms);
}

int pollReadable(int wakeUpFd, int fd, int ms, bool& wakeUp, bool& data) {
    pollfd descriptors[] = {{wakeUpFd, POLLIN, 0}, {fd, POLLIN, 0}};
    const int ready = pollDescriptors(descriptors, ms);
    wakeUp = ready > 0 && descriptors[0].revents != 0;
    data = ready > 0 && descriptors[1].revents != 0;
    return ready;
}

int spinReadable(int wakeUpFd, int fd, int us, bool& wakeUp, bool& data) {
    const auto end = Clock::now() + std::chrono::microseconds(us);
    int ready = pollReadable(wakeUpFd, fd, 0, wakeUp, data);
    while (ready == 0 && Clock::now() < end) {
        std::this_thread::yield();  // the peer may need this very processor to answer
        ready = pollReadable(wakeUpFd, fd, 0, wakeUp, data);
    }
    return ready;
}

}  // namespace Varnex
