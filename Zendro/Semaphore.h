#pragma once

#include <semaphore>

namespace Zendro {

/// A counter of permits: `down` takes one, sleeping until there is one; `up` gives one. Any thread may call either.
class Semaphore {
public:
    /// `count`: the permits there are at the start, 0 or more.
    explicit Semaphore(int count = 0) : semaphore_(count) {}
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    void up() { semaphore_.release(); }
    void down() { semaphore_.acquire(); }

    /// Takes a permit when there is one; never sleeps.
    [[nodiscard]] bool tryDown() { return semaphore_.try_acquire(); }

private:
    std::counting_semaphore<> semaphore_;
};

}  // namespace Zendro
