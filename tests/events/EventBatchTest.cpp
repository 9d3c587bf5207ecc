#include <tests/events/ProbeEvent.h>
#include <tests/events/Samples.h>
#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/Scripted.h>

#include <Varnex/events/EventBatch.h>
#include <Varnex/transport/BufferedCommunicator.h>

#include <gtest/gtest.h>

using namespace Varnex;

namespace {

std::string content(const EventBatch& batch) {
    return {batch.getData(), static_cast<std::size_t>(batch.getSize())};
}

TEST(EventBatchTest, GoesOutInOneCallAndComesBackThroughABuffer) {
    const CapturedDiagnostics lines;
    EventBatch batch;
    std::string singly;
    for (int round = 0; round < 100; ++round) {
        for (const Sample& sample : samples()) {
            if (sample.wire.size() == 12) continue;  // without fields it cannot be received from a connection
            ASSERT_TRUE(batch.add(*sample.event));
            singly += sample.wire;
        }
        MessageEvent large(1, std::string(static_cast<std::size_t>(300 * round), 'x').c_str());
        ASSERT_TRUE(batch.add(large));
        singly += wireOf(large);
    }
    EXPECT_EQ(batch.getCount(), 1200);
    ScriptedCommunicator connection;
    ASSERT_TRUE(batch.send(&connection));
    EXPECT_EQ(connection.sendCalls, 1);
    EXPECT_EQ(batch.getSize() + batch.getCount(), 0);
    ASSERT_TRUE(connection.bytes.append(connection.sent()) == singly);

    connection.pieceSizes = {1000};
    BufferedCommunicator buffered(&connection);
    std::string received;
    for (Event* event = nullptr; Event::receive(&buffered, event) && event != nullptr;)
        received += wireOf(*std::unique_ptr<Event>(event));
    EXPECT_TRUE(received == singly);
}

TEST(EventBatchTest, WhatDoesNotFitLeavesTheBatchAsItWas) {
    const CapturedDiagnostics lines;
    EventBatch batch;
    batch.setMaxBytes(40);
    MessageEvent message(3, "hi");
    StatusEvent status("a");
    MessageEvent large(3, std::string(30000, 'x').c_str());
    ProbeEvent nothing;
    nothing.writesHeader = false;
    EXPECT_TRUE(batch.add(message));
    for (Event* event : std::initializer_list<Event*>{&status, &large, &nothing}) EXPECT_FALSE(batch.add(*event));
    EXPECT_EQ(hexOf(content(batch)), hexOf(kMessage));
    EXPECT_EQ(batch.getCount(), 1);
    EXPECT_TRUE(batch.add(message));
    EXPECT_EQ(hexOf(content(batch)), hexOf(kMessage + kMessage));
    batch.setMaxBytes(0);
    EXPECT_TRUE(batch.add(large));
    EXPECT_TRUE(content(batch) == kMessage + kMessage + wireOf(large));
}

TEST(EventBatchTest, FailedSendKeepsItAndASuccessfulOneBeginsAnew) {
    MessageEvent message(3, "hi");
    EventBatch batch;
    ScriptedSender sender;
    EXPECT_TRUE(batch.send(&sender));
    EXPECT_EQ(sender.sendCalls, 0);
    batch.add(message);
    sender.failSend = 1;
    EXPECT_FALSE(batch.send(&sender));
    sender.takeAtMost = 17;
    EXPECT_FALSE(batch.send(&sender));
    EXPECT_EQ(hexOf(content(batch)), hexOf(kMessage));
    sender.takeAtMost = -1;
    EXPECT_TRUE(batch.send(&sender));
    message.setCode(4);
    batch.add(message);
    EXPECT_EQ(hexOf(content(batch)), digits("56583031 00000012 000a 0000 0004 0002 6869"));
    EXPECT_EQ(wireOf(message), content(batch));
    batch.clear();
    EXPECT_EQ(batch.getSize() + batch.getCount(), 0);
}

}  // namespace
