#pragma once

#include "StopWatcher.h"

#include <Varnex/transport/Client.h>
#include <Varnex/transport/Serial.h>

#include <Zendro/Mutex.h>
#include <Zendro/ObjectThread.h>

#include <string>

namespace VarnexTool {

/// Carries bytes between a serial line and a TCP connection, unchanged, in both directions. Both are open; they and the
/// watcher outlive it.
class SerialBridge {
public:
    /// `names` are for the line that tells which side ended.
    struct Side {
        Varnex::Communicator& channel;
        std::string name;
    };

    SerialBridge(const Side& line, const Side& connection, StopWatcher& stop);

    /// Until one side ends or the watcher stops, which breaks the waits of both. What ended, or empty when stopped.
    [[nodiscard]] std::string run();

private:
    int carryFromLine();
    void carry(const Side& from, const Side& to);
    void end(const std::string& why);

    const Side line_;
    const Side connection_;
    StopWatcher& stop_;
    Zendro::Mutex mutex_;
    std::string ended_ VARNEX_GUARDED_BY(mutex_);
    Zendro::ObjectThread<SerialBridge> thread_;  // last: it uses the others
};

}  // namespace VarnexTool
