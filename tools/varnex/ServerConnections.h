#pragma once

#include "DiscoveryOptions.h"
#include "EventLog.h"
#include "PeerLog.h"
#include "StopWatcher.h"

#include <Varnex/hub/MultiClient.h>

namespace VarnexTool {

struct Endpoint;

/// Connections to servers, which are dialled again after ever longer pauses when they are lost. Says on the error
/// stream who is connected and who is lost.
class ServerConnections : public LoggedHub<Varnex::MultiClient> {
public:
    explicit ServerConnections(const DiscoveryOptions& discovery);

    /// Connects to all servers that are found, now and later. Throws `Failure` when discovery does not work.
    void discover();

    /// Waits until one is connected, or the watcher stops. Throws `Failure` when the time runs out.
    void awaitFirst(std::chrono::duration<double> time, const StopWatcher& stop) const;

    /// Connects to one, trying again until that works or the watcher stops. Throws `Failure` when the host has no
    /// address.
    void connect(const Endpoint& to, const StopWatcher& stop);
};

}  // namespace VarnexTool
