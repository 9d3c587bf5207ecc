#pragma once

#include <chrono>
#include <thread>

constexpr auto kSoon = std::chrono::seconds(60);

/// Waits for what other threads do.
template <class Condition>
bool eventually(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + kSoon;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::yield();
    }
    return true;
}
