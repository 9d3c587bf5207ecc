#pragma once

namespace Varnex {

/// What became of the messages, each the argument of one send, that were offered to a connection:
/// `offered == sent + dropped + waiting` at every moment, and the same of the bytes.
struct SendCounters {
    struct Count {
        unsigned long long messages = 0;
        unsigned long long bytes = 0;

        void add(int size) {
            ++messages;
            bytes += static_cast<unsigned long long>(size);
        }
        void remove(int size) {
            --messages;
            bytes -= static_cast<unsigned long long>(size);
        }
    };

    Count offered;
    Count sent;     ///< taken by the system whole
    Count dropped;  ///< by the policy, or not taken whole
    Count waiting;
};

}  // namespace Varnex
