#pragma once

#include <atomic>
#include <cerrno>
#include <optional>

/// The system calls that a test program linked with -Wl,--wrap=NAME for each may let fail.
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

/// What happens to the calls of one name, from any thread.
struct CallScript {
    std::atomic<int> skip = 0;
    std::atomic<int> failures = 0;
    std::atomic<int> error = 0;
    std::atomic<long> result = -1;
    std::atomic<int> calls = 0;         ///< made so far
    std::atomic<long> lastResult = -1;  ///< of the last real call

    static CallScript& of(Call call) {
        static CallScript all[static_cast<int>(Call::kCount)];
        return all[static_cast<int>(call)];
    }
    /// The result of a call that is to fail, with `errno` set; none for a real one.
    std::optional<long> next() {
        ++calls;
        if (failures <= 0 || skip-- > 0 || failures-- <= 0) return std::nullopt;
        errno = error;
        return result;
    }
};

/// While it lives, `failures` calls return `result` with `error` in `errno`, after `skip` real ones.
class FailingCall {
public:
    struct Times {
        int failures = 1;
        int skip = 0;
        long result = -1;
    };
    explicit FailingCall(Call call, int error) : FailingCall(call, error, Times()) {}
    FailingCall(Call call, int error, Times times) : script_(CallScript::of(call)) {
        script_.skip = times.skip;
        script_.error = error;
        script_.result = times.result;
        script_.failures = times.failures;
    }
    ~FailingCall() { script_.failures = 0; }
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;

private:
    CallScript& script_;
};

/// Defines the wrapper of one call; once in a program.
#define VARNEX_WRAP(Result, name, parameters, arguments)                                       \
    extern "C" Result __real_##name parameters;                                                \
    extern "C" Result __wrap_##name parameters {                                               \
        if (const auto failure = CallScript::of(Call::name).next()) return (Result)(*failure); \
        const Result result = __real_##name arguments;                                         \
        CallScript::of(Call::name).lastResult = (long)(result);                                \
        return result;                                                                         \
    }
