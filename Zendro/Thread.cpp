#include <Zendro/Thread.h>

#include <atomic>
#include <exception>

namespace Zendro {

namespace {

constinit std::atomic<Thread::FailureHandler> failureHandler = nullptr;

}  // namespace

Thread::~Thread() {
    if (isStarted_) std::terminate();
}

bool Thread::start() {
    if (isStarted_) return false;
    pthread_attr_t attributes;
    if (::pthread_attr_init(&attributes) != 0) return false;
    if (stackSize_ > 0) ::pthread_attr_setstacksize(&attributes, stackSize_);
    isStarted_ = true;  // the thread may be over before the next line
    if (::pthread_create(&thread_, &attributes, &Thread::run, this) != 0) isStarted_ = false;
    ::pthread_attr_destroy(&attributes);
    return isStarted_;
}

int Thread::join() {
    if (!isStarted_ || ::pthread_equal(thread_, ::pthread_self()) != 0) return result_;
    ::pthread_join(thread_, nullptr);
    isStarted_ = false;
    return result_;
}

void* Thread::run(void* thread) noexcept {
    Thread& self = *static_cast<Thread*>(thread);
    try {
        self.result_ = self.main();
    } catch (...) {
        if (const FailureHandler handler = failureHandler) handler();
        self.result_ = -1;
    }
    return nullptr;
}

void Thread::setFailureHandler(FailureHandler handler) {
    failureHandler = handler;
}

}  // namespace Zendro
