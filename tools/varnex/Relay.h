#pragma once

#include "HubStatus.h"
#include "StatusLine.h"
#include "StopWatcher.h"

#include <Varnex/hub/HubReader.h>
#include <Varnex/hub/MultiServer.h>

#include <Zendro/ObjectThread.h>

namespace VarnexTool {

/// Passes each event of a hub's connections on to all others, as the bytes that came, and shows the hub's status now
/// and then. The hub is open; it and the others outlive the relay.
class Relay {
public:
    struct Options {
        double statusSeconds = 1;  ///< between two status lines
        bool json = false;
        bool quiet = false;  ///< no status lines
    };

    Relay(LoggedHub<Varnex::MultiServer>& hub, StatusLine& line, StopWatcher& stop, const Options& options);

    /// Serves until the watcher, which breaks the hub's wait, stops it.
    void run();

    [[nodiscard]] bool isOutputGone() const { return outputGone_; }

private:
    void pass(const Varnex::HubReader::News& news);
    int showStatus();
    void showOne();

    LoggedHub<Varnex::MultiServer>& hub_;
    StatusLine& line_;
    StopWatcher& stop_;
    const Options options_;
    Varnex::HubReader reader_;
    HubMeter meter_;
    std::atomic<bool> outputGone_ = false;
    Zendro::ObjectThread<Relay> statusThread_;  // last: it uses the others
};

}  // namespace VarnexTool
