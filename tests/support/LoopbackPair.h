#pragma once

#include <Varnex/transport/Client.h>
#include <Varnex/transport/Server.h>
#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/FailingCall.h>
#include <tests/support/ThrowsText.h>

#include <memory>
#include <thread>
#include <vector>

/// A server on a free port of 127.0.0.1, a client and the server's end of their connection.
struct LoopbackPair {
    Varnex::Server server;
    Varnex::Client client;
    std::unique_ptr<Varnex::Client> peer;

    LoopbackPair() {
        server.open("127.0.0.1", 0);
        connect();
    }
    void connect() {
        client.open("127.0.0.1", server.getLocalPort());
        peer.reset(server.getClient());
    }
};

inline bool sends(Varnex::Sender& to, const std::string& text) {
    int n = static_cast<int>(text.size());
    return to.send(text.data(), n) && n == static_cast<int>(text.size());
}

/// At most `n` bytes by one receive.
inline std::string received(Varnex::Receiver& from, int n = 100) {
    std::string bytes(static_cast<std::size_t>(n), ' ');
    return from.receive(bytes.data(), n) ? bytes.substr(0, static_cast<std::size_t>(n)) : "(failed)";
}

/// All that arrives until `size` bytes have, or the stream ends.
inline std::string receivedAll(Varnex::Receiver& from, std::size_t size) {
    std::string all, part;
    while (all.size() < size && !(part = received(from, static_cast<int>(size - all.size()))).empty()) all += part;
    return all;
}
