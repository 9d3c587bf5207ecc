#pragma once

#include "DiscoveryOptions.h"
#include "Endpoint.h"

#include <Varnex/hub/MultiClient.h>
#include <Varnex/transport/Wait.h>

#include <Zendro/Mutex.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace VarnexTool {

/// What a server announces. Anyone can: its texts are a stranger's.
struct FoundServer {
    std::string host;  ///< a numeric address
    unsigned short port = 0;
    std::string name;
    std::uint32_t mask = 0;
    unsigned short id = 0;
};

/// Asks the network for servers, without connecting to them.
class ServerFinder {
public:
    static constexpr std::size_t kMaxServers = 4096;  ///< more are not kept

    explicit ServerFinder(const DiscoveryOptions& discovery);

    /// All that answer within this time, each once, by address and port. Throws `Failure` when discovery does not work.
    [[nodiscard]] std::vector<FoundServer> all(std::chrono::duration<double> time);

    /// The first that answers. Throws `Failure`, also when none does; after `stop` the result means nothing.
    [[nodiscard]] Endpoint first(std::chrono::duration<double> time);

    /// Ends the search. Any thread.
    void stop();

private:
    void take(const Varnex::ServerInfoEvent& info);
    void search(std::chrono::duration<double> time);

    Varnex::Wait over_;
    Zendro::Mutex mutex_;
    std::map<std::pair<std::string, unsigned short>, FoundServer> found_ VARNEX_GUARDED_BY(mutex_);
    std::atomic<bool> firstIsEnough_ = false;
    std::atomic<bool> stopped_ = false;
    Varnex::MultiClient client_;  // last: its thread uses the others
};

}  // namespace VarnexTool
