#pragma once

#include <atomic>
#include <cerrno>
#include <filesystem>

/// The system calls that can fail in a program that wraps them.
// clang-format off
enum class Call { accept4, bind, mkostemp, inflateInit2_, EVP_Digest, RAND_bytes, cfsetispeed, cfsetospeed, close, connect, getnameinfo, getsockname, ioctl, listen, pipe2, poll,
                  read, recv, recvfrom, send, sendmsg, sendto, setsockopt, signal, socket, sp_list_ports, tcgetattr, tcsetattr, write,
                  kCount };
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

    /// What this call is to fail with, `errno` included; null when it is not to fail.
    static const Script* due(Call call) {
        auto& script = scripts[static_cast<int>(call)];
        if (script.left <= 0 || script.left-- <= 0) return nullptr;
        errno = script.error;
        return &script;
    }

private:
    Script& script_;
};

/// How many descriptors this process has open.
inline auto openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}
