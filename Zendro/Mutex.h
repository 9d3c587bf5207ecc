#pragma once

#include <Zendro/ThreadSafety.h>

#include <mutex>

namespace Zendro {

/// A lock for one thread at a time; locking it twice from one thread is an error of the caller. Members that it guards
/// carry `VARNEX_GUARDED_BY`, which clang checks.
class VARNEX_CAPABILITY("mutex") Mutex {
public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() VARNEX_ACQUIRE() { mutex_.lock(); }
    void unlock() VARNEX_RELEASE() { mutex_.unlock(); }

private:
    std::mutex mutex_;
};

/// Holds a `Mutex` for the length of a block.
class VARNEX_SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) VARNEX_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~MutexLock() VARNEX_RELEASE() { mutex_.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& mutex_;
};

}  // namespace Zendro
