#pragma once

#include <Zendro/Export.h>

#include <thread>

namespace Zendro {

/// A thread of execution that runs `main()` between `start()` and `join()`.
///
/// One owner starts and joins it. A subclass joins in its own destructor, while its members still live; the base
/// destructor only checks that this was done.
class ZENDRO_API Thread {
public:
    Thread() = default;
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// The thread has been joined by now, or was never started; anything else ends the process.
    virtual ~Thread();

    /// Begins `main()`. False when the thread runs already or the system cannot make one.
    bool start();

    /// Waits for the end of `main()` and returns what it returned; at once when the thread is not started.
    int join();

protected:
    /// The thread's work. Whatever escapes from it is printed as an "ERROR: " line and ends it with -1.
    virtual int main() = 0;

private:
    void run() noexcept;

    std::thread thread_;
    int result_ = 0;
};

}  // namespace Zendro
