#pragma once

#include <Varnex/transport/Chunk.h>

#include <cstddef>
#include <vector>

namespace Varnex {

// Private to the library.

/// What is left to send of an array of chunks, which itself stays as it is.
class RemainingChunks {
public:
    RemainingChunks(const Chunk* chunks, int count);

    [[nodiscard]] bool empty() const { return first_ == chunks_.size(); }

    /// The next chunks, as many as the system takes in one call.
    [[nodiscard]] Chunk* data() { return chunks_.data() + first_; }
    [[nodiscard]] int count() const;

    /// Skips the chunks that went out whole and moves into the one that went out in part.
    void advance(unsigned long sent);

private:
    std::vector<Chunk> chunks_;
    std::size_t first_ = 0;
};

}  // namespace Varnex
