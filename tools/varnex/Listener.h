#pragma once

#include "Connection.h"

#include <Varnex/transport/Server.h>

#include <list>

namespace VarnexTool {

/// Accepts connections and keeps them until they end. The server, the log and the watcher outlive it.
class Listener {
public:
    /// The watcher breaks the server's wait when it stops.
    Listener(Varnex::Server& server, EventLog& log, StopWatcher& stop) : server_(server), log_(log), stop_(stop) {}

    /// Serves until the watcher stops it; every connection has ended then.
    void run();

private:
    void accept();
    void pause(const std::string& why);
    void removeEnded();
    void endAll();

    Varnex::Server& server_;
    EventLog& log_;
    StopWatcher& stop_;
    std::list<Connection> connections_;
    bool pausing_ = false;
};

/// Breaks the server's wait from any thread, without throwing.
void wake(Varnex::Server& server) noexcept;

}  // namespace VarnexTool
