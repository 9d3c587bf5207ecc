#include <tests/events/Wire.h>

#include <cstdlib>
#include <new>

constinit std::atomic<std::size_t> largestAllocation = 0;

void* operator new(std::size_t size) {
    if (size > largestAllocation) largestAllocation = size;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
