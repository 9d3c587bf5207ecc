#include <Varnex/transport/RemainingChunks.h>

#include <algorithm>
#include <climits>

namespace Varnex {

RemainingChunks::RemainingChunks(const Chunk* chunks, int count) : chunks_(chunks, chunks + std::max(count, 0)) {
    advance(0);  // past empty chunks
}

int RemainingChunks::count() const {
    return static_cast<int>(std::min<std::size_t>(chunks_.size() - first_, IOV_MAX));
}

void RemainingChunks::advance(unsigned long sent) {
    while (first_ < chunks_.size() && sent >= static_cast<unsigned long>(chunks_[first_].size)) {
        sent -= static_cast<unsigned long>(chunks_[first_].size);
        ++first_;
    }
    if (sent == 0) return;
    chunks_[first_].data = static_cast<const char*>(chunks_[first_].data) + sent;
    chunks_[first_].size -= static_cast<int>(sent);
}

}  // namespace Varnex
