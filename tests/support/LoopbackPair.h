#pragma once

#include <Varnex/transport/Client.h>
#include <Varnex/transport/Server.h>

#include <memory>

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
