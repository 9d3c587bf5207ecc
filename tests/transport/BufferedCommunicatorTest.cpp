#include <Varnex/transport/BufferedCommunicator.h>
#include <tests/support/Scripted.h>

#include <gtest/gtest.h>

using Varnex::BufferedCommunicator;

namespace {

std::string receive(Varnex::Communicator& from, int n) {
    std::string bytes(static_cast<std::size_t>(n), ' ');
    if (!from.receive(bytes.data(), n)) return "(failed)";
    return bytes.substr(0, static_cast<std::size_t>(n));
}

}  // namespace

TEST(BufferedCommunicatorTest, SmallMessagesThatCameTogetherCostOneReceive) {
    ScriptedCommunicator inner;
    BufferedCommunicator buffered(&inner);
    for (int i = 0; i < 100; ++i) inner.bytes += "message " + std::to_string(10 + i % 90);
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(buffered.waitForData());
        EXPECT_EQ(receive(buffered, 10), "message " + std::to_string(10 + i % 90));
    }
    EXPECT_EQ(inner.receives, 1);
    EXPECT_EQ(inner.waits, 1);
    EXPECT_EQ(receive(buffered, 10), "");  // the end of the stream
}

TEST(BufferedCommunicatorTest, UnreadBytesAreDataButAWakeUpComesFirst) {
    ScriptedCommunicator inner;
    BufferedCommunicator buffered(&inner, false, 4);
    inner.bytes = "abcdef";
    int n = 0;
    EXPECT_EQ(receive(buffered, 1), "a");
    EXPECT_TRUE(buffered.dataAvail(n) && n == 5);
    inner.stalls = true;
    inner.bytes.clear();
    EXPECT_EQ(buffered.waitForData(-1), 2);
    buffered.breakWait();
    EXPECT_FALSE(buffered.waitForData());
    EXPECT_EQ(buffered.waitForData(-1), 2);
    EXPECT_EQ(receive(buffered, 10), "bcd");
    EXPECT_EQ(buffered.waitForData(0), 3);
    EXPECT_EQ(receive(buffered, 1), "(failed)");
}

TEST(BufferedCommunicatorTest, LargeReceivesGoStraightIntoTheCallersMemory) {
    ScriptedCommunicator inner;
    BufferedCommunicator buffered(&inner, false, 4), smallest(&inner, false, 0);
    inner.bytes = "abcdefghijklm";
    EXPECT_EQ(receive(buffered, 8), "abcdefgh");
    EXPECT_EQ(receive(buffered, 3), "ijk");
    EXPECT_EQ(receive(buffered, 8), "l");
    EXPECT_EQ(inner.receives, 2);
    EXPECT_EQ(receive(smallest, 1), "m");
}

TEST(BufferedCommunicatorTest, CloseForgetsUnreadBytesAndFailuresPassThrough) {
    ScriptedCommunicator inner;
    BufferedCommunicator buffered(&inner);
    inner.bytes = "xyz";
    inner.failReceive = inner.failWait = 1;
    EXPECT_EQ(buffered.waitForData(0), 0);
    EXPECT_EQ(receive(buffered, 1), "(failed)");
    EXPECT_EQ(receive(buffered, 1), "x");
    int n = 0;
    EXPECT_TRUE(buffered.close() && inner.closed && !buffered.dataAvail(n));
    const Varnex::Chunk chunk{"sent", 4};
    EXPECT_TRUE(buffered.send(&chunk, 1, n) && buffered.send("!", n = 1));
    EXPECT_EQ(inner.sent(), "sent!");
}

TEST(SenderTest, ChunksAreSentOneByOneUpToTheFirstThatIsNotTakenWhole) {
    const struct {
        int count, takeAtMost, failSend;
        bool ok;
        const char* sent;
    } cases[] = {
        {3, -1, 0, true, "abcdefg"}, {0, -1, 0, true, ""},    {-1, -1, 0, true, ""},
        {3, 2, 0, true, "abcd"},     {3, -1, 2, false, "ab"},
    };
    for (const auto& c : cases) {
        ScriptedSender sender;
        sender.takeAtMost = c.takeAtMost;
        sender.failSend = c.failSend;
        const Varnex::Chunk chunks[] = {{"ab", 2}, {"cdef", 4}, {"g", 1}};
        int sent = -1;
        EXPECT_EQ(sender.send(chunks, c.count, sent), c.ok);
        EXPECT_EQ(sender.sent(), c.sent);
        EXPECT_EQ(sent, static_cast<int>(sender.sent().size()));
    }
}
