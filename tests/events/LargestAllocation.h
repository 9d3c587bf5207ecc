#pragma once

#include <cstddef>

/// Measures what the test program allocates while it lives; one object at a time.
class LargestAllocation {
public:
    LargestAllocation();
    /// Bytes of the largest single allocation since construction.
    [[nodiscard]] std::size_t bytes() const;
};
