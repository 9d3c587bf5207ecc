#include "Listener.h"

#include <Varnex/transport/Exception.h>

#include <utility>

namespace VarnexTool {

namespace {

constexpr std::chrono::milliseconds kPause{100};
constexpr int kKeepAliveSeconds = 60;

}  // namespace

void Listener::run() {
    while (!stop_.isStopped()) {
        if (server_.waitForClient(-1) == Varnex::Server::WaitClient) accept();
        removeEnded();
    }
    endAll();
}

void Listener::accept() {
    std::unique_ptr<Varnex::Client> client;
    try {
        client.reset(server_.getClient());
    } catch (const Varnex::Exception& error) {
        return pause(error.what());
    }
    pausing_ = false;
    client->setKeepAlive(kKeepAliveSeconds);  // a peer that vanished must not hold a thread for ever
    Connection& connection = connections_.emplace_back(std::move(client), log_, [this] { wake(server_); });
    if (connection.start()) return;
    EventLog::note(connection.peer() + " dropped: cannot start a thread");
    connections_.pop_back();
}

/// The connection stays waiting; descriptors come back as others end. Tells it once.
void Listener::pause(const std::string& why) {
    if (!std::exchange(pausing_, true)) EventLog::note("no more connections for now: " + why);
    static_cast<void>(stop_.sleepUntil(std::chrono::steady_clock::now() + kPause));
}

void Listener::removeEnded() {
    std::erase_if(connections_, [](const Connection& connection) { return connection.isEnded(); });
}

/// Wakes all before it waits for the first.
void Listener::endAll() {
    for (Connection& connection : connections_) connection.stop();
    connections_.clear();
}

void wake(Varnex::Server& server) noexcept {
    try {
        server.breakWait();
    } catch (const Varnex::Exception&) {  // no pipe: then nobody waits, and the next wait fails
    }
}

}  // namespace VarnexTool
