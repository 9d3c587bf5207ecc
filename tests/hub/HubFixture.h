#pragma once

#include <Varnex/events/MessageEvent.h>
#include <Varnex/hub/HubReader.h>
#include <Varnex/hub/HubTarget.h>
#include <Varnex/hub/MultiClient.h>
#include <Varnex/hub/MultiServer.h>
#include <tests/support/Eventually.h>
#include <tests/support/LoopbackPair.h>

#include <gmock/gmock.h>

#include <chrono>
#include <condition_variable>
#include <future>

using Varnex::Communicator;
using Varnex::MultiCommunicator;

/// A hub and, for each of its connections, the far end.
struct HubFixture : testing::Test {
    MultiCommunicator hub;
    Varnex::Server server;
    std::vector<Communicator*> near;
    std::vector<std::unique_ptr<Varnex::Client>> far;
    int n = 0;

    HubFixture() { server.open("127.0.0.1", 0); }

    Communicator* add() {
        far.push_back(std::make_unique<Varnex::Client>());
        far.back()->open("127.0.0.1", server.getLocalPort());
        near.push_back(server.getClient());
        EXPECT_TRUE(hub.addCommunicator(near.back()));
        return near.back();
    }
    Communicator* next() {
        Communicator* connection = nullptr;
        EXPECT_TRUE(hub.waitForCommunicators() && hub.receiveCommunicator(connection));
        return connection;
    }
    bool broadcast(const std::string& text) { return hub.send(text.data(), n = static_cast<int>(text.size())); }
    int available() {
        EXPECT_TRUE(hub.communicatorsAvail(n));
        return n;
    }
};
