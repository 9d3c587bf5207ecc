#include <Varnex/transport/UDP.h>
#include <tests/hub/HubFixture.h>

using Varnex::LostReason;

/// Notes what the callbacks tell, in order.
struct LostConnectionTest : HubFixture {
    std::mutex mutex;
    std::vector<std::pair<Communicator*, std::string>> news;

    LostConnectionTest() {
        hub.setConnectedCallback([this](Communicator* c) { note(c, "connected"); });
        hub.setLostCallback([this](Communicator* c, LostReason r) { note(c, "lost " + std::to_string(int(r))); });
    }
    ~LostConnectionTest() override { hub.close(); }
    void note(Communicator* c, const std::string& what) {
        const std::lock_guard lock(mutex);
        news.emplace_back(c, what);
    }
    bool told(Communicator* c, const std::string& what) {
        const std::lock_guard lock(mutex);
        return std::count(news.begin(), news.end(), std::pair(c, what)) == 1;
    }
    static std::string lost(LostReason reason) { return "lost " + std::to_string(int(reason)); }
};

TEST_F(LostConnectionTest, TheHubDeletesWhatIsLostAndTellsWhyOnce) {
    hub.setDeleteLost(true);
    auto* const goes = add();
    auto* const stays = add();
    sends(*far[0], "last words");
    EXPECT_EQ(next(), goes);
    far[0]->close();
    EXPECT_EQ(received(*goes), "last words");  // and no end of the stream is ever handed out
    EXPECT_EQ(available(), 0);
    ASSERT_TRUE(eventually([&] { return hub.getCount() == 1; }));
    ASSERT_TRUE(eventually([&] { return told(goes, lost(LostReason::PeerClosed)); }));
    EXPECT_TRUE(told(goes, "connected") && told(stays, "connected") && available() == 0);
    EXPECT_TRUE(hub.dropCommunicator(stays));
    EXPECT_TRUE(eventually([&] { return told(stays, lost(LostReason::Dropped)); }));
    EXPECT_EQ(news.size(), 4u);
}

TEST_F(LostConnectionTest, WithoutTheOptionTheApplicationHearsAndRemoves) {
    auto* const connection = add();
    far[0]->close();
    EXPECT_EQ(next(), connection);
    EXPECT_EQ(next(), connection);
    EXPECT_TRUE(eventually([&] { return told(connection, lost(LostReason::PeerClosed)); }));
    EXPECT_EQ(hub.getCount(), 1);
    EXPECT_TRUE(hub.dropCommunicator(connection));
    hub.close();
    EXPECT_EQ(news.size(), 2u);
}

TEST_F(LostConnectionTest, WhatTheConsumerHoldsIsDeletedOnceItIsHandedBack) {
    hub.setDeleteLost(true);
    hub.setSendPolicy(
        {.mode = Varnex::SendPolicy::Queue, .whenFull = Varnex::SendPolicy::Disconnect, .maxMessages = 1});
    auto* const connection = add();
    sends(*far[0], "read me");
    EXPECT_EQ(next(), connection);
    CapturedDiagnostics quiet;
    while (broadcast(std::string(1 << 20, '.'))) std::this_thread::yield();
    std::promise<void> later;  // everything told so far has been treated
    hub.setConnectedCallback([&](Communicator*) { later.set_value(); });
    add();
    later.get_future().wait();
    EXPECT_EQ(received(*connection), "read me");
    EXPECT_TRUE(hub.getCount() == 2 && available() == 0);
    EXPECT_TRUE(eventually([&] { return told(connection, lost(LostReason::QueueFull)); }));
    EXPECT_EQ(hub.getCount(), 1);
}

TEST_F(LostConnectionTest, WhatACallbackThrowsIsPrintedAndTheNextIsCalled) {
    const CapturedDiagnostics printed;
    hub.setLostCallback([&](Communicator* c, LostReason) {
        note(c, "lost");
        throw std::runtime_error("not today");
    });
    for (int i = 0; i < 2; ++i) hub.dropCommunicator(add());
    hub.close();
    EXPECT_TRUE(told(near[0], "lost") && told(near[1], "lost"));
    EXPECT_EQ(printed.errors(), "ERROR: not today\nERROR: not today\n");
}

TEST_F(LostConnectionTest, CallbacksMaySendAndDropAndCloseForgetsNone) {
    hub.setConnectedCallback([&](Communicator* c) {
        int size = 5;
        hub.sendTo(c, "hello", size);
    });
    hub.setLostCallback([&](Communicator*, LostReason) {
        int size = 4;
        hub.send("gone", size);
    });
    for (int i = 0; i < 2; ++i) add();
    EXPECT_TRUE(receivedAll(*far[0], 5) == "hello" && receivedAll(*far[1], 5) == "hello");
    EXPECT_TRUE(hub.dropCommunicator(near[0]));
    EXPECT_EQ(receivedAll(*far[1], 4), "gone");
    hub.dropCommunicator(near[1]);
    hub.close();  // the lost one is deleted in any case
    EXPECT_EQ(received(*far[1]), "");
}

TEST_F(LostConnectionTest, ADatagramChannelOutlivesWhatStrangersSend) {
    const CapturedDiagnostics printed;
    hub.setDeleteLost(true);
    auto* const channel = new Varnex::UDP;
    Varnex::UDP stranger;
    ASSERT_TRUE(channel->open() && stranger.open());
    stranger.setDestination(Varnex::InetAddress::getLoopbackAddress(), channel->getPort());
    hub.addCommunicator(channel);
    for (const char* bad : {"", "x", "this is no event"}) sends(stranger, bad);
    sends(stranger, std::string("VX01\0\0\0\x10half", 12));
    Varnex::MessageEvent message;
    message.send(&stranger);
    Varnex::HubReader reader(hub);
    EXPECT_EQ(reader.read().what, Varnex::HubReader::What::Event);
    hub.setSendPolicy({.mode = Varnex::SendPolicy::Queue});
    EXPECT_EQ(hub.getCount(), 1);
}

TEST_F(LostConnectionTest, ReadersDropWhatEndsOrSendsGarbageAndNobodyWaitsForHalfAnEvent) {
    using What = Varnex::HubReader::What;
    CapturedDiagnostics quiet;
    for (int i = 0; i < 4; ++i) add();
    Varnex::HubReader reader(hub);
    Varnex::MessageEvent message;
    message.setText("hello");
    message.send(far[0].get());
    const auto first = reader.read();
    EXPECT_TRUE(first.what == What::Event && first.connection == near[0] && first.number == 1);

    sends(*far[1], std::string("VX01\0\0\0\x10", 8));  // half an event
    sends(*far[2], "this is no event");
    EXPECT_EQ(reader.read().what, What::Broken);
    far[3]->close();
    EXPECT_EQ(reader.read().what, What::Closed);
    for (int i = 0; i < 1000; ++i) message.send(far[0].get());  // several blocks
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(reader.read().what, What::Event);
    sends(*far[1], std::string("\x03\xe7\0\0abcd", 8));  // the rest, of an unknown type
    EXPECT_EQ(reader.read().what, What::Unknown);
    sends(*far[1], "VX01");
    far[1]->close();
    EXPECT_EQ(reader.read().what, What::Broken);
    hub.breakWait();
    EXPECT_EQ(reader.read().what, What::Woken);
    EXPECT_EQ(hub.getCount(), 1);
    EXPECT_TRUE(eventually([&] { return told(near[2], lost(LostReason::ReceiveFailed)); }));
}
