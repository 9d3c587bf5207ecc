#include <Varnex/transport/Sender.h>

namespace Varnex {

Sender::~Sender() = default;

bool Sender::send(const Chunk* chunks, int count, int& sent) {
    sent = 0;
    for (int i = 0; i < count; ++i) {
        int n = chunks[i].size;
        const bool ok = send(chunks[i].data, n);
        sent += n;
        if (!ok) return false;
        if (n < chunks[i].size) return true;
    }
    return true;
}

}  // namespace Varnex
