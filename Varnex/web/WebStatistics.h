#pragma once

#include <Varnex/Export.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>

namespace Varnex {

/// What a web server has done since it was made. Any thread.
class VARNEX_API WebStatistics {
public:
    using Counter = std::atomic<std::uint64_t>;

    /// Upper ends, in microseconds, of the classes of `durations`; a further one holds what took longer.
    static constexpr std::array<std::uint32_t, 10> kDurationEnds = {100,    250,     1'000,   2'500,     10'000,
                                                                    25'000, 100'000, 250'000, 1'000'000, 10'000'000};

    Counter accepted = 0;                 ///< connections
    Counter active = 0;                   ///< of them, now
    Counter refused = 0;                  ///< requests that could not be read
    Counter bytesSent = 0;                ///< of bodies
    Counter microseconds = 0;             ///< from the end of a request to that of its reply, in all
    std::array<Counter, 6> replies = {};  ///< by the first digit of the code
    std::array<Counter, kDurationEnds.size() + 1> durations = {};  ///< replies by how long they took

    void addReply(unsigned long code, std::uint64_t bytes, std::chrono::microseconds duration);
};

}  // namespace Varnex
