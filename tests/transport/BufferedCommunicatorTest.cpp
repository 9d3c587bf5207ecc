#include <Varnex/transport/BufferedCommunicator.h>
#include <tests/support/LoopbackPair.h>
#include <tests/support/Scripted.h>

struct BufferedCommunicatorTest : testing::Test {
    ScriptedCommunicator inner;
    Varnex::BufferedCommunicator buffered{&inner, false, 4}, large{&inner};
    int n = 1;
};

TEST_F(BufferedCommunicatorTest, SmallMessagesThatCameTogetherCostOneReceive) {
    for (int i = 100; i < 200; ++i) inner.bytes += "message " + std::to_string(i);
    for (int i = 100; i < 200; ++i) {
        EXPECT_TRUE(large.waitForData() && received(large, 11) == "message " + std::to_string(i));
    }
    EXPECT_TRUE(inner.receives == 1 && inner.waits == 1);
    EXPECT_EQ(received(large, 1), "");  // the end of the stream
}

TEST_F(BufferedCommunicatorTest, UnreadBytesAreDataButAWakeUpComesFirst) {
    inner.bytes = "abcdef";
    inner.stalls = true;
    EXPECT_EQ(received(buffered, 1), "a");
    EXPECT_TRUE(buffered.dataAvail(n) && n == 5);
    inner.bytes.clear();
    EXPECT_TRUE(buffered.waitForData());
    buffered.breakWait();
    EXPECT_TRUE(!buffered.waitForData() && buffered.waitForData(-1) == 2);
    EXPECT_EQ(received(buffered, 10), "bcd");
    EXPECT_TRUE(buffered.waitForData(0) == 3 && received(buffered, 1) == "(failed)");
}

TEST_F(BufferedCommunicatorTest, LargeReceivesGoStraightAndCloseForgetsUnreadBytes) {
    inner.bytes = "abcdefghijkl";
    inner.failReceive = 1;
    for (const char* bytes : {"(failed)", "abcdefgh", "ijkl"}) EXPECT_EQ(received(buffered, 8), bytes);
    EXPECT_EQ(inner.receives, 3);
    inner.bytes = "xyz";
    EXPECT_EQ(received(buffered, 1), "x");
    EXPECT_TRUE(buffered.close() && inner.closed && !buffered.dataAvail(n));
}
