#include <Varnex/streams/base64decodebuf.h>
#include <Varnex/streams/base64encodebuf.h>
#include <Varnex/streams/iStream.h>
#include <Varnex/streams/ioStream.h>
#include <Varnex/streams/oStream.h>
#include <Varnex/streams/urlbuf.h>
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

TEST(StreamsTest, AResetAndAFailedSendShowInTheState) {
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
}

struct Counted : ScriptedCommunicator {
    static inline int alive = 0, lateSends = 0;
    Counted() { ++alive, bytes.assign(9000, 'x'); }
    ~Counted() override { --alive, lateSends += sendCalls - 1; }
};

TEST(StreamsTest, EachDirectionHasABufferOfItsSizeAndTheOwnerDeletesOnce) {
    auto *receiver = new Counted, *sender = new Counted, *both = new Counted;
    {
        iStream in(receiver, true);
        oStream out(sender, true);
        ioStream stream(both, true);
        for (std::istream* each : {static_cast<std::istream*>(&in), static_cast<std::istream*>(&stream)}) each->get();
        for (std::ostream* each : {static_cast<std::ostream*>(&out), static_cast<std::ostream*>(&stream)}) {
            *each << std::string(8190, 'x') << 'y';
            EXPECT_EQ(sender->sendCalls + both->sendCalls, each == &out ? 0 : 1);
            *each << 'z';
        }
        EXPECT_EQ(receiver->bytes.size() + both->bytes.size(), 2 * (9000U - 8192U));
        EXPECT_EQ(in.rdbuf()->sputc('x'), EOF);
        EXPECT_EQ(out.rdbuf()->sgetc(), EOF);
        stream << "lost";
        StreamBuf two(new Counted, new Counted, 8, 8, true, true);
        EXPECT_EQ(Counted::alive, 5);
    }
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ(Counted::lateSends, -3);  // two streams have sent once
}

template <class Codec>
std::string readLive(const std::string& sent, int waits) {
    ScriptedCommunicator wire;
    wire.bytes = sent;
    wire.stalls = true;
    iStream source(&wire, false);
    Codec codec(source);
    std::string text;
    while (codec.in_avail() > 0 || text.empty()) text += static_cast<char>(codec.sbumpc());
    EXPECT_EQ(wire.waits, waits);
    return text;
}

TEST(StreamsTest, CodecsHandOutWhatALiveConnectionHasSent) {
    EXPECT_EQ(readLive<base64encodebuf>("TWFu\r\nTWFuT\r\n", 1), "ManMan");
    EXPECT_EQ(readLive<base64decodebuf>("ManManM", 1), "TWFuTWFu");
    EXPECT_EQ(readLive<urlbuf>("a=1&b=%202", 1), "a=1&b= 2");
}

TEST(StreamsTest, ADatagramIsSentByEachFlushAndByABlockThatDoesNotFit) {
    UDP receiver, sender;
    receiver.open();
    sender.setDestination(InetAddress::getLoopbackAddress(), receiver.getPort());
    sender.open();
    oStream out(&sender, false);
    iStream in(&receiver, false);
    out << "a " << 1 << std::flush << "b" << std::string(9000, 'c') << std::flush;
    for (const std::size_t size : {3, 1, 9000}) {
        std::string datagram(9001, 0);
        int n = 9001;
        EXPECT_TRUE(in.rdbuf()->receive(datagram.data(), n));
        EXPECT_EQ(n, size);
    }
}

}  // namespace
