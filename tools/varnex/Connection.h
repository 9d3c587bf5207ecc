#pragma once

#include "EventLog.h"

#include <Varnex/events/EventReader.h>
#include <Varnex/transport/BufferedCommunicator.h>
#include <Varnex/transport/Client.h>

#include <Zendro/ObjectThread.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace VarnexTool {

/// One accepted connection and the thread that reads its events into the log.
class Connection {
public:
    /// `onEnd` is called from the thread as its last act. The log outlives the connection.
    Connection(std::unique_ptr<Varnex::Client> client, EventLog& log, std::function<void()> onEnd);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// False when the system cannot make a thread.
    [[nodiscard]] bool start() { return thread_.start(); }

    /// Whether the thread has nothing more to do.
    [[nodiscard]] bool isEnded() const { return ended_; }

    /// Tells the thread to end; the destructor waits for it. Owner only.
    void stop();

    [[nodiscard]] const std::string& peer() const { return peer_; }

private:
    int main();
    void readAll();
    [[nodiscard]] bool readOne(std::string& lines);
    [[nodiscard]] bool treat(const Varnex::EventReader::Result& result) const;

    EventLog& log_;
    std::function<void()> onEnd_;
    std::string peer_;
    Varnex::BufferedCommunicator communicator_;
    Varnex::EventReader reader_;
    std::atomic<bool> stopping_ = false;
    std::atomic<bool> ended_ = false;
    Zendro::ObjectThread<Connection> thread_;  // last, so that it is joined first
};

}  // namespace VarnexTool
