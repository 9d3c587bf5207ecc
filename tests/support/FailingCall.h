#pragma once

#include <atomic>
#include <cerrno>

/// The system calls that can fail in a program that wraps them.
// clang-format off
enum class Call { accept4, close, connect, getnameinfo, getsockname, listen, pipe2, poll, recv, send, sendmsg,
                  setsockopt, signal, socket, kCount };
// clang-format on

/// While it lives, the next `times` calls give `result`, with `error` in `errno`.
class FailingCall {
public:
    FailingCall(Call call, int error, int result = -1, int times = 1) : script_(scripts_[static_cast<int>(call)]) {
        script_.error = error;
        script_.result = result;
        script_.left = times;
    }
    ~FailingCall() { script_.left = 0; }

    /// For the wrappers: whether this call fails, with `errno` set.
    static bool take(Call call, int& result) {
        Script& script = scripts_[static_cast<int>(call)];
        if (script.left <= 0 || script.left-- <= 0) return false;
        errno = script.error;
        return result = script.result, true;
    }

private:
    struct Script {
        std::atomic<int> left;
        int error, result;
    };
    static inline Script scripts_[static_cast<int>(Call::kCount)];
    Script& script_;
};
