#pragma once

#include <atomic>

/// The system calls that can fail in a program that wraps them.
// clang-format off
enum class Call { accept4, close, connect, getnameinfo, getsockname, listen, pipe2, poll, recv, send, sendmsg,
                  setsockopt, signal, socket, kCount };
// clang-format on

/// While it lives, the next `times` calls give `result`, with `error` in `errno`.
class FailingCall {
public:
    FailingCall(Call call, int error, int result = -1, int times = 1) : script_(scripts[static_cast<int>(call)]) {
        script_.error = error;
        script_.result = result;
        script_.left = times;
    }
    ~FailingCall() { script_.left = 0; }

    /// What the wrappers follow.
    static inline struct Script {
        std::atomic<int> left;
        int error, result;
    } scripts[static_cast<int>(Call::kCount)];

private:
    Script& script_;
};
