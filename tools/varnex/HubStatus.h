#pragma once

#include "PeerLog.h"

#include <Varnex/hub/SendCounters.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace VarnexTool {

/// What a hub did up to one moment, for the status line. A value.
struct HubStatus {
    struct Client {
        std::string peer;
        unsigned long long in = 0;  ///< events that came from it
        Varnex::SendCounters::Count sent;
        Varnex::SendCounters::Count dropped;
        Varnex::SendCounters::Count waiting;
    };

    double inRate = 0;                    ///< events a second since the status before
    double outRate = 0;                   ///< deliveries a second to the clients that are still there
    unsigned long long waitingBytes = 0;  ///< for all clients
    unsigned long long dropped = 0;       ///< deliveries that the policy dropped, since the start
    unsigned long long lost = 0;          ///< connections that were dropped, since the start
    std::vector<Client> clients;

    /// A line without its end; of the clients only the one that is furthest behind.
    [[nodiscard]] std::string text() const;
    [[nodiscard]] std::string json() const;
};

/// Takes the status of a hub again and again. One thread.
class HubMeter {
public:
    HubMeter(const Varnex::MultiCommunicator& hub, const PeerLog& peers) : hub_(hub), peers_(peers) {}

    [[nodiscard]] HubStatus take();

private:
    using Clock = std::chrono::steady_clock;
    using Counters = std::map<unsigned long long, Varnex::SendCounters>;

    const Varnex::MultiCommunicator& hub_;
    const PeerLog& peers_;
    Clock::time_point last_ = Clock::now();
    unsigned long long lastEvents_ = 0;
    unsigned long long dropped_ = 0;
    Counters lastCounters_;  // by the number of the connection
};

}  // namespace VarnexTool
