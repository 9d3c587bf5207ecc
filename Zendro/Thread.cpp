#include <Zendro/Thread.h>

#include <atomic>
#include <system_error>

namespace Zendro {

namespace {

constinit std::atomic<Thread::FailureHandler> failureHandler = nullptr;

}  // namespace

Thread::~Thread() = default;

bool Thread::start() {
    if (thread_.joinable()) return false;
    try {
        thread_ = std::thread(&Thread::run, this);
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

int Thread::join() {
    if (thread_.get_id() == std::this_thread::get_id()) return result_;
    if (thread_.joinable()) thread_.join();
    return result_;
}

void Thread::run() noexcept {
    try {
        result_ = main();
    } catch (...) {
        if (const FailureHandler handler = failureHandler) handler();
        result_ = -1;
    }
}

void Thread::setFailureHandler(FailureHandler handler) {
    failureHandler = handler;
}

}  // namespace Zendro
