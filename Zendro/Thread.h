#pragma once

#include <Zendro/Export.h>

#include <cstddef>

#include <pthread.h>

namespace Zendro {

/// A thread of execution that runs `main()` between `start()` and `join()`.
///
/// One owner starts and joins it. A subclass joins in its own destructor, while its members still live; the base
/// destructor only checks that this was done. Whatever `main()` blocks on is for the owner to end before the join.
class ZENDRO_API Thread {
public:
    Thread() = default;
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// The thread has been joined by now, or was never started; anything else ends the process.
    virtual ~Thread();

    /// Bytes of the stack of later starts; 0, as at first: the system's default. Small stacks make short-lived threads
    /// cheap, because the system keeps the memory of those that have ended.
    void setStackSize(std::size_t bytes) { stackSize_ = bytes; }

    /// Begins `main()`. False when an earlier start was not joined yet or the system cannot make a thread.
    bool start();

    /// Waits for the end of `main()` and returns what it returned; at once when the thread is not started. On the
    /// thread itself it returns at once, too, and the join is still due.
    int join();

    /// Called on a thread whose `main()` lets an exception escape, while it is being handled (`throw;` finds it).
    using FailureHandler = void (*)();

    /// Replaces the handler for the whole process; null, the first one, reports nothing.
    static void setFailureHandler(FailureHandler handler);

protected:
    /// The thread's work. Whatever escapes from it goes to the failure handler, and `join()` returns -1.
    virtual int main() = 0;

private:
    static void* run(void* thread) noexcept;

    std::size_t stackSize_ = 0;
    bool isStarted_ = false;
    pthread_t thread_{};
    int result_ = 0;
};

}  // namespace Zendro
