#pragma once

#include <Varnex/transport/Client.h>
#include <Varnex/transport/Server.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <sys/socket.h>

/// A server on a free port of 127.0.0.1 that answers each request with the next piece of its script, whatever is asked.
class ScriptedServer {
public:
    /// What comes after the bytes: a further request on the same connection, its end, its reset, or nothing at all.
    enum Then { Keep, Close, Reset, Hold };
    struct Answer {
        std::string bytes;
        Then then = Close;
    };

    explicit ScriptedServer(std::vector<Answer> script) : script_(std::move(script)) {
        server_.open("127.0.0.1", 0);
        thread_ = std::thread([this] { serve(); });
    }
    ~ScriptedServer() {
        isStopped_ = true;
        thread_.join();
    }
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    [[nodiscard]] unsigned short port() const { return server_.getLocalPort(); }
    [[nodiscard]] std::string url(const std::string& path = "/", const std::string& user = "") const {
        return "http://" + user + "127.0.0.1:" + std::to_string(port()) + path;
    }
    /// The heads that came, so far.
    [[nodiscard]] std::vector<std::string> requests() const {
        const std::lock_guard lock(mutex_);
        return requests_;
    }

    [[nodiscard]] int connections() const { return connections_; }

private:
    static constexpr int kTurn = 20;  // milliseconds between two looks at the flag

    void serve() {
        while (!isStopped_ && next_ < script_.size()) {
            if (server_.waitForClient(kTurn) != Varnex::Server::WaitClient) continue;
            const std::unique_ptr<Varnex::Client> client(server_.getClient());
            ++connections_;
            Then then = Keep;
            while (then == Keep && next_ < script_.size() && readHead(*client)) then = answer(*client);
            while (then == Hold && !isStopped_) client->waitForData(kTurn);
            if (then == Reset) reset(*client);
        }
    }

    bool readHead(Varnex::Client& client) {
        std::string head;
        while (!isStopped_ && !head.ends_with("\r\n\r\n")) {
            if (client.waitForData(kTurn) != Varnex::Receiver::WaitData) continue;
            char bytes[4096];
            int n = sizeof bytes;
            if (!client.receive(bytes, n) || n == 0) return false;
            head.append(bytes, static_cast<std::size_t>(n));
        }
        const std::lock_guard lock(mutex_);
        requests_.push_back(std::move(head));
        return !isStopped_;
    }

    Then answer(Varnex::Client& client) {
        const Answer& reply = script_[next_++];
        for (std::size_t sent = 0; sent < reply.bytes.size();) {
            int n = static_cast<int>(reply.bytes.size() - sent);
            if (!client.send(reply.bytes.data() + sent, n)) return Close;
            sent += static_cast<std::size_t>(n);
        }
        return reply.then;
    }

    static void reset(Varnex::Client& client) {
        const linger none{1, 0};
        ::setsockopt(client.getDescriptor(), SOL_SOCKET, SO_LINGER, &none, sizeof none);
    }

    Varnex::Server server_;
    std::vector<Answer> script_;
    std::size_t next_ = 0;
    mutable std::mutex mutex_;
    std::vector<std::string> requests_;
    std::atomic<int> connections_ = 0;
    std::atomic<bool> isStopped_ = false;
    std::thread thread_;
};
