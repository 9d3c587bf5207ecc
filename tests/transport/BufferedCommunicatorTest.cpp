#include <Varnex/transport/BufferedCommunicator.h>
#include <tests/support/LoopbackPair.h>
#include <tests/support/Scripted.h>

#include <gtest/gtest.h>

using Varnex::BufferedCommunicator;

TEST(BufferedCommunicatorTest, SmallMessagesThatCameTogetherCostOneReceive) {
    ScriptedCommunicator inner;
    BufferedCommunicator buffered(&inner);
    for (int i = 100; i < 200; ++i) inner.bytes += "message " + std::to_string(i);
    for (int i = 100; i < 200; ++i) {
        EXPECT_TRUE(buffered.waitForData());
        EXPECT_EQ(received(buffered, 11), "message " + std::to_string(i));
    }
    EXPECT_TRUE(inner.receives == 1 && inner.waits == 1);
    EXPECT_EQ(received(buffered, 1), "");  // the end of the stream
}

TEST(BufferedCommunicatorTest, UnreadBytesAreDataButAWakeUpComesFirst) {
    ScriptedCommunicator inner;
    BufferedCommunicator buffered(&inner, false, 4);
    inner.bytes = "abcdef";
    inner.stalls = true;
    int n = 0;
    EXPECT_EQ(received(buffered, 1), "a");
    EXPECT_TRUE(buffered.dataAvail(n) && n == 5);
    inner.bytes.clear();
    EXPECT_EQ(buffered.waitForData(-1), 2);
    buffered.breakWait();
    EXPECT_FALSE(buffered.waitForData());
    EXPECT_EQ(buffered.waitForData(-1), 2);
    EXPECT_EQ(received(buffered, 10), "bcd");
    EXPECT_EQ(buffered.waitForData(0), 3);
    EXPECT_EQ(received(buffered, 1), "(failed)");
}

TEST(BufferedCommunicatorTest, LargeReceivesGoStraightAndCloseForgetsUnreadBytes) {
    ScriptedCommunicator inner;
    BufferedCommunicator buffered(&inner, false, 4);
    inner.bytes = "abcdefghijkl";
    inner.failReceive = 1;
    for (const char* bytes : {"(failed)", "abcdefgh", "ijkl"}) EXPECT_EQ(received(buffered, 8), bytes);
    EXPECT_EQ(inner.receives, 3);
    inner.bytes = "xyz";
    EXPECT_EQ(received(buffered, 1), "x");
    int n = 1;
    EXPECT_TRUE(buffered.close() && inner.closed && !buffered.dataAvail(n));
}

TEST(SenderTest, ChunksAreSentOneByOneUpToTheFirstThatIsNotTakenWhole) {
    const Varnex::Chunk chunks[] = {{"ab", 2}, {"cdef", 4}, {"g", 1}};
    const auto send = [&](int count, int takeAtMost, int failSend) {
        ScriptedSender sender;
        sender.takeAtMost = takeAtMost;
        sender.failSend = failSend;
        int sent = -1;
        const bool ok = sender.send(chunks, count, sent);
        return sender.sent() + " " + std::to_string(sent) + (ok ? "" : " failed");
    };
    EXPECT_EQ(send(3, -1, 0), "abcdefg 7");
    EXPECT_EQ(send(3, 2, 0), "abcd 4");
    EXPECT_EQ(send(3, -1, 2), "ab 2 failed");
    EXPECT_EQ(send(-1, -1, 0), " 0");
}
