#pragma once

#include <cstddef>
#include <streambuf>
#include <string>

/// Takes what is written into memory that is there already, so that a measurement holds no allocation.
class MemoryTarget : public std::streambuf {
public:
    explicit MemoryTarget(std::size_t capacity) : bytes_(capacity, 0) { restart(); }
    void restart() { setp(bytes_.data(), bytes_.data() + bytes_.size()); }
    std::string written() const { return {pbase(), pptr()}; }

private:
    std::string bytes_;
};
