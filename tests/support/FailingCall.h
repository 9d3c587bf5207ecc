#pragma once

#include <atomic>
#include <cerrno>

/// The system calls that can fail in a program that wraps them.
enum class Call {
    accept4,
    bind,
    close,
    connect,
    getsockname,
    listen,
    pipe2,
    poll,
    recv,
    send,
    sendmsg,
    setsockopt,
    signal,
    socket,
    kCount
};

struct CallAnswer {
    int times = 1;
    long result = -1;
};

/// While it lives, the next `answer.times` calls give `answer.result`, with `error` in `errno`.
class FailingCall {
public:
    explicit FailingCall(Call call, int error, CallAnswer answer = {}) : script_(scriptOf(call)) {
        script_.error = error;
        script_.result = answer.result;
        script_.left = answer.times;
    }
    ~FailingCall() { script_.left = 0; }
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;

    /// For the wrappers: whether this call fails, with `errno` set.
    static bool take(Call call, long& result) {
        Script& script = scriptOf(call);
        if (script.left <= 0 || script.left-- <= 0) return false;
        errno = script.error;
        result = script.result;
        return true;
    }

private:
    struct Script {
        std::atomic<int> left = 0;
        int error = 0;
        long result = 0;
    };
    static Script& scriptOf(Call call) {
        static Script all[static_cast<int>(Call::kCount)];
        return all[static_cast<int>(call)];
    }

    Script& script_;
};
