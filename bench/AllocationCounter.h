#pragma once

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>

// Counts what the program allocates. Include it in one source of a benchmark: it replaces the global operator new.

inline std::atomic<long> allocationCount = 0;

[[gnu::noinline]] void* operator new(std::size_t size) {
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size);
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

/// Reports the allocations of one iteration as the counter "allocs".
class AllocationReport {
public:
    explicit AllocationReport(benchmark::State& state) : state_(state), before_(allocationCount) {}
    ~AllocationReport() {
        state_.counters["allocs"] =
            benchmark::Counter(static_cast<double>(allocationCount - before_), benchmark::Counter::kAvgIterations);
    }
    AllocationReport(const AllocationReport&) = delete;
    AllocationReport& operator=(const AllocationReport&) = delete;

private:
    benchmark::State& state_;
    long before_;
};
