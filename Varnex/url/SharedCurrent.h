#pragma once

#include <Zendro/Mutex.h>

#include <memory>
#include <utility>

namespace Varnex {

// Private to the library.

/// The one object of a kind that the process uses at present; at first, and in place of null, a default one.
template <class T>
class SharedCurrent {
public:
    /// Of the process; also for static objects that open URLs at its end.
    static SharedCurrent& instance() {
        static SharedCurrent& only = *new SharedCurrent;
        return only;
    }

    void set(std::shared_ptr<const T> object) {
        if (object == nullptr) object = std::make_shared<const T>();
        const Zendro::MutexLock lock(mutex_);
        object_.swap(object);
    }
    [[nodiscard]] std::shared_ptr<const T> get() {
        const Zendro::MutexLock lock(mutex_);
        return object_;
    }

private:
    Zendro::Mutex mutex_;
    std::shared_ptr<const T> object_ VARNEX_GUARDED_BY(mutex_) = std::make_shared<const T>();
};

}  // namespace Varnex
