#include <tests/events/LargestAllocation.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constinit std::atomic<std::size_t> largest = 0;

void* allocate(std::size_t size) {
    if (size > largest) largest = size;
    return std::malloc(size);
}

}  // namespace

LargestAllocation::LargestAllocation() {
    largest = 0;
}

std::size_t LargestAllocation::bytes() const {
    return largest;
}

// All of them: a sanitizer's own ones would not meet these otherwise.
void* operator new(std::size_t size) {
    if (void* memory = allocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
