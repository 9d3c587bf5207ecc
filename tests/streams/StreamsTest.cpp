#include <Varnex/streams/iStream.h>
#include <Varnex/streams/ioStream.h>
#include <Varnex/streams/oStream.h>
#include <Varnex/transport/UDP.h>
#include <tests/support/LoopbackPair.h>
#include <tests/support/Scripted.h>

#include <gtest/gtest.h>

using namespace Varnex;

namespace {

TEST(StreamsTest, LinesCrossAConnectionInBothDirections) {
    LoopbackPair pair;
    ioStream client(&pair.client, false), server(pair.peer.release(), true);
    std::string line;
    client << "first " << 1 << '\n' << std::string(20000, 'x') << std::endl;
    ASSERT_TRUE(std::getline(server, line));
    EXPECT_EQ(line, "first 1");
    ASSERT_TRUE(std::getline(server, line));
    EXPECT_EQ(line, std::string(20000, 'x'));
    server << "answer" << std::flush;
    EXPECT_TRUE(server.rdbuf()->close());
    EXPECT_FALSE(std::getline(client, line).good());
    EXPECT_EQ(line, "answer");
    EXPECT_TRUE(client.eof());
}

TEST(StreamsTest, AResetAFailedSendAndNoConnectionShowInTheState) {
    const CapturedDiagnostics printed;
    LoopbackPair pair;
    iStream in(&pair.client, false);
    oStream out(pair.peer.get(), false);
    out << "unread" << std::flush;
    pair.client.waitForData();
    pair.peer->abort();
    in.rdbuf()->setTimeout(5000);
    while (in.get() != EOF) {
    }
    EXPECT_TRUE(in.eof());
    EXPECT_FALSE(out << "more" << std::flush);
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(printed.errors(), "ERROR: Cannot send (Broken pipe)\n");

    ioStream none(nullptr, true);
    EXPECT_EQ(none.get(), EOF);
    none.clear();
    EXPECT_FALSE(none << "x" << std::flush);
}

TEST(StreamsTest, AnotherThreadEndsARead) {
    LoopbackPair pair;
    iStream in(&pair.client, false);
    std::thread breaker([&] { in.rdbuf()->breakWait(); });
    EXPECT_EQ(in.get(), EOF);
    breaker.join();
    in.clear();
    in.rdbuf()->setDeadline(1);
    EXPECT_EQ(in.get(), EOF);
    in.clear();
    in.rdbuf()->setDeadline(-1);
    EXPECT_TRUE(sends(*pair.peer, "x"));
    EXPECT_EQ(in.get(), 'x');
}

TEST(StreamsTest, EachSideHasABufferOfItsOwnDirectionAndOwnsWhatItIsGiven) {
    auto* wire = new ScriptedCommunicator;
    wire->bytes = "12 34";
    iStream in(wire, true);
    int number = 0;
    EXPECT_TRUE(in >> number);
    EXPECT_EQ(number, 12);
    EXPECT_EQ(in.rdbuf()->sputc('x'), EOF);
    oStream out(new ScriptedCommunicator, true);
    EXPECT_EQ(out.rdbuf()->sgetc(), EOF);
    out << std::string(8191, 'x');
    EXPECT_TRUE(out.put('y').flush());
}

TEST(StreamsTest, ADatagramIsSentByEachFlush) {
    UDP receiver, sender;
    receiver.open();
    sender.setDestination(InetAddress::getLoopbackAddress(), receiver.getPort());
    sender.open();
    oStream out(&sender, false);
    iStream in(&receiver, false);
    std::string line;
    out << "a " << 1 << '\n' << std::flush << "b\n" << std::flush;
    std::getline(in, line);
    EXPECT_EQ(line, "a 1");
    std::getline(in, line);
    EXPECT_EQ(line, "b");
}

}  // namespace
