#include <Varnex/streams/StreamBuf.h>
#include <tests/support/Scripted.h>

#include <gtest/gtest.h>

using namespace Varnex;

namespace {

const int kEof = std::char_traits<char>::eof();

/// Numbers are bytes of the buffers.
struct OpenBuf : StreamBuf {
    OpenBuf(Communicator& c, unsigned output, unsigned input) : StreamBuf(&c, &c, output, input, false, false) {}
    using StreamBuf::overflow, StreamBuf::underflow, StreamBuf::showmanyc;
    using StreamBuf::protDataAvail, StreamBuf::protWaitForData;
};

TEST(StreamBufTest, TheByteThatFillsTheBufferSendsItAtOnce) {
    ScriptedCommunicator wire;
    OpenBuf buffer(wire, 8192, 0);
    for (int i = 0; i < 8191; ++i) buffer.sputc('\xff');
    EXPECT_EQ(wire.sendCalls, 0);
    EXPECT_EQ(buffer.sputc('\xff'), 0);  // the result of the flush, not the character
    EXPECT_EQ(wire.sendCalls, 1);
    EXPECT_EQ(wire.sent(), std::string(8192, '\xff'));
    EXPECT_EQ(buffer.overflow(kEof), 0);
    EXPECT_EQ(wire.sendCalls, 1);
}

struct Written {
    std::string before, block;  ///< by single characters into a buffer of 8 bytes, then at once
    std::streamsize result;
    std::string sent, afterFlush;
    int sendCalls = 0, takeAtMost = -1, failSend = 0;
};

TEST(StreamBufTest, BlocksThatDoNotFitGoOutDirectly) {
    const Written cases[] = {{"ab", "1234", 4, "", "ab1234", 0},
                             {"ab", "12345", 5, "ab12345", "ab12345", 2},  // exactly what is free
                             {"ab", "123456789", 9, "ab123456789", "ab123456789", 2},
                             {"", "1234567", 7, "1234567", "1234567", 1},
                             {"abcdefg", "1", 1, "1", "1abcdefg", 1},  // exactly full: overtaken
                             {"abcdefg", "", 0, "", "abcdefg", 0},
                             {"ab", "", 0, "", "ab", 0},
                             {"ab", "12345", 5, "ab12345", "ab12345", 7, 1},
                             {"ab", "12345", 0, "", "ab", 1, -1, 1},
                             {"ab", "12345", 0, "a", "aab", 2, 1, 2},  // the pending block goes out anew, whole
                             {"ab", "12345", 0, "ab", "ab", 3, 1, 3},  // nothing of the block went out
                             {"ab", "12345", 2, "ab12", "ab12", 5, 1, 5},
                             {"ab", "12345", 0, "ab", "ab", 2, -1, 2},
                             {"ab", "12345", 0, "", "ab", 1, 0}};
    for (const auto& [before, block, result, sent, afterFlush, sendCalls, takeAtMost, failSend] : cases) {
        SCOPED_TRACE(before + "|" + block + "|" + sent);
        ScriptedCommunicator wire;
        OpenBuf buffer(wire, 8, 0);
        for (const char c : before) buffer.sputc(c);
        wire.takeAtMost = takeAtMost;
        wire.failSend = failSend;
        EXPECT_EQ(buffer.sputn(block.data(), std::ssize(block)), result);
        EXPECT_EQ(wire.sent(), sent);
        EXPECT_EQ(wire.sendCalls, sendCalls);
        wire.takeAtMost = -1;
        wire.failSend = 0;
        EXPECT_EQ(buffer.pubsync(), 0);
        EXPECT_EQ(wire.sent(), afterFlush);
        EXPECT_EQ(buffer.sputn(block.data(), -1), 0);
    }
}

/// Gathers chunks into one send, which counts as one.
struct GatheringSender : ScriptedCommunicator {
    using ScriptedCommunicator::send;
    bool keeps = false;
    bool send(const Chunk* chunks, int count, int& sent) override {
        std::string all;
        for (int i = 0; i < count; ++i)
            all.append(static_cast<const char*>(chunks[i].data), static_cast<std::size_t>(chunks[i].size));
        sent = static_cast<int>(all.size());
        return send(all.data(), sent);
    }
    bool keepsMessages() const override { return keeps; }
};

struct Joined {
    int takeAtMost, failSend;
    bool keeps;
    std::streamsize result;
    std::string sent, afterFlush;
    int sendCalls;
};

TEST(StreamBufTest, AFlushAndTheBlockThatFollowsGoOutTogetherUnlessMessagesAreKept) {
    const std::string all = "abcd12345678";
    const Joined cases[] = {{-1, 0, false, 8, all, all, 1},          {-1, 0, true, 8, all, all, 2},
                            {3, 0, false, 8, all, all, 5},           {4, 0, false, 8, all, all, 3},
                            {5, 0, false, 8, all, all, 3},           {0, 0, false, 0, "", "abcd", 1},
                            {3, 2, false, 0, "abc", "abcabcd", 2},   {4, 2, false, 0, "abcd", "abcd", 2},
                            {6, 2, false, 2, "abcd12", "abcd12", 2}, {-1, 1, false, 0, "", "abcd", 1}};
    for (const auto& [takeAtMost, failSend, keeps, result, sent, afterFlush, sendCalls] : cases) {
        SCOPED_TRACE(std::to_string(takeAtMost) + " " + std::to_string(failSend));
        GatheringSender wire;
        wire.takeAtMost = takeAtMost;
        wire.failSend = failSend;
        wire.keeps = keeps;
        OpenBuf buffer(wire, 8, 0);
        buffer.sputn("abcd", 4);
        EXPECT_EQ(buffer.sputn("12345678", 8), result);
        EXPECT_EQ(wire.sent(), sent);
        EXPECT_EQ(wire.sendCalls, sendCalls);
        wire.takeAtMost = -1;
        EXPECT_EQ(buffer.pubsync(), 0);
        EXPECT_EQ(wire.sent(), afterFlush);
    }
}

TEST(StreamBufTest, AFailedFlushKeepsEverythingAndNeverWritesPastTheBuffer) {
    ScriptedCommunicator wire;
    wire.takeAtMost = 0;
    OpenBuf buffer(wire, 4, 0);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(buffer.sputc('a'), 'a');
    for (int i = 0; i < 9; ++i) EXPECT_EQ(buffer.sputc('b'), kEof);  // the first is kept, in the reserve
    EXPECT_EQ(buffer.pubsync(), -1);
    wire.takeAtMost = -1;
    EXPECT_EQ(buffer.sputn("!", 1), 1);  // overtakes, as with any full buffer
    EXPECT_EQ(buffer.overflow('c'), 0);
    EXPECT_EQ(buffer.pubsync(), 0);
    EXPECT_EQ(wire.sent(), "!aaabc");
}

TEST(StreamBufTest, ASizeOfZeroClosesItsDirection) {
    ScriptedCommunicator wire;
    wire.bytes = "abc";
    OpenBuf buffer(wire, 0, 0);
    int count = 7;
    char c;
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(buffer.sputc('x'), kEof);
        EXPECT_EQ(buffer.sputn("x", 1), 0);
        EXPECT_EQ(buffer.pubsync(), -1);
        EXPECT_EQ(buffer.sgetc(), kEof);
        EXPECT_EQ(buffer.sgetn(&c, 1), 0);
        EXPECT_FALSE(buffer.dataAvail(count) || buffer.waitForData() || buffer.waitForData(5));
        EXPECT_EQ(count, 0);
        EXPECT_TRUE(buffer.close());
    }
    EXPECT_EQ(wire.waits, 0);
    buffer.setSendBufSize(1);
    buffer.setRecvBufSize(1);
    EXPECT_EQ(buffer.sputc('x'), 0);
    EXPECT_EQ(buffer.sbumpc(), 'a');
    EXPECT_EQ(wire.sent(), "x");
}

struct Read {
    std::vector<std::size_t> pieces;
    int want;
    std::string got;
    int waits, receives, failReceive = 0, failWait = 0;
};

TEST(StreamBufTest, ReadsAreWaitedForAndStopAtTheFirstFailure) {
    const Read cases[] = {{{}, 4, "abcd", 1, 1},
                          {{}, 9, "abcdefghi", 2, 2},  // after the first block straight into the caller's memory
                          {{1}, 9, "abcdefghi", 9, 9},
                          {{1}, 99, "abcdefghijkl", 13, 13},
                          {{2}, 6, "ab", 2, 2, 2},
                          {{2}, 6, "ab", 2, 1, 0, 2},
                          {{2}, 6, "", 2, 0, 0, 1},
                          {{0}, 6, "", 2, 2},
                          {{2, 0, 2}, 6, "ab", 2, 2},
                          {{}, 0, "", 1, 1},
                          {{}, -1, "", 1, 1}};
    for (const auto& [pieces, want, got, waits, receives, failReceive, failWait] : cases) {
        SCOPED_TRACE(testing::PrintToString(pieces) + std::to_string(want));
        ScriptedCommunicator wire;
        wire.bytes = "abcdefghijkl";
        wire.pieceSizes = pieces;
        wire.failReceive = failReceive;
        wire.failWait = failWait;
        OpenBuf buffer(wire, 0, 8);
        buffer.sgetc();
        const auto block = std::make_unique<char[]>(static_cast<std::size_t>(std::max(want, 0)));
        const std::streamsize n = failWait == 1 ? 0 : buffer.sgetn(block.get(), want);
        EXPECT_EQ(std::string(block.get(), static_cast<std::size_t>(n)), got);
        EXPECT_EQ(wire.waits, failWait == 1 ? 1 : waits);
        EXPECT_EQ(wire.receives, receives);
        EXPECT_TRUE(n <= 8 || buffer.sungetc() == kEof);  // the last byte is not in the buffer
    }
    ScriptedCommunicator wire;
    wire.bytes = "\xff";
    OpenBuf buffer(wire, 0, 8);
    for (const int c : {255, 255}) EXPECT_EQ(buffer.underflow(), c);
    buffer.sbumpc();
    EXPECT_EQ(buffer.sgetc(), kEof);
    EXPECT_EQ(buffer.sungetc(), 255);  // the end takes nothing away
}

TEST(StreamBufTest, UnreadInputAnswersBeforeTheReceiver) {
    ScriptedCommunicator wire;
    wire.bytes = "abcdef";
    wire.pieceSizes = {4};
    wire.stalls = true;
    OpenBuf buffer(wire, 0, 8);
    int count = 0;
    EXPECT_EQ(buffer.sbumpc(), 'a');
    EXPECT_EQ(buffer.waitForData(0), 2);
    EXPECT_TRUE(buffer.waitForData());
    EXPECT_EQ(wire.waits, 1);
    EXPECT_TRUE(buffer.dataAvail(count));
    EXPECT_EQ(count, 5);
    EXPECT_TRUE(buffer.protDataAvail(count));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(buffer.showmanyc(), 2);
    wire.bytes.clear();
    EXPECT_EQ(buffer.protWaitForData(0), 3);
    EXPECT_FALSE(buffer.protWaitForData());
    buffer.breakWait();
    EXPECT_EQ(buffer.protWaitForData(0), 1);
    wire.closed = true;
    EXPECT_FALSE(buffer.dataAvail(count));
    EXPECT_EQ(buffer.showmanyc(), 0);
    char c;
    EXPECT_EQ(buffer.sgetn(&c, 1), 1);
    EXPECT_EQ(c, 'b');
    for (const char unread : {'c', 'd'}) EXPECT_EQ(buffer.sbumpc(), unread);
    wire.bytes = "gh";
    buffer.breakWait();
    for (const int next : {kEof, int{'g'}}) EXPECT_EQ(buffer.sgetc(), next);  // it ends one read
}

TEST(StreamBufTest, SendAndReceiveGoPastTheBuffers) {
    ScriptedCommunicator wire;
    wire.bytes = "abcdef";
    wire.pieceSizes = {2};
    OpenBuf buffer(wire, 8, 8);
    buffer.sputc('x');
    buffer.sgetc();
    int n = 1;
    EXPECT_TRUE(buffer.send("y", n));
    EXPECT_EQ(wire.sent(), "y");
    char block[2];
    n = 2;
    EXPECT_TRUE(buffer.receive(block, n));
    EXPECT_EQ(std::string(block, 2), "cd");
    EXPECT_EQ(buffer.sgetc(), 'a');
    wire.failWait = wire.waits + 1;
    EXPECT_FALSE(buffer.receive(block, n) || n != 0);

    StreamBuf none(nullptr, nullptr, 8, 8, true, true);
    n = 2;
    EXPECT_FALSE(none.send("ab", n) || n != 0);
    n = 2;
    EXPECT_FALSE(none.receive(block, n) || n != 0);
    EXPECT_EQ(none.sputn("123456789", 9), 0);
    EXPECT_EQ(none.sputn("1", 1), 1);
    EXPECT_EQ(none.pubsync(), -1);
    EXPECT_EQ(none.sgetc(), kEof);
    EXPECT_EQ(none.in_avail(), 0);
    EXPECT_FALSE(none.close() || none.dataAvail(n) || none.waitForData() || none.waitForData(0) != 0);
    none.breakWait();
}

TEST(StreamBufTest, CloseFlushesAndForgetsTheRest) {
    ScriptedCommunicator out, in;
    in.bytes = "abc";
    StreamBuf buffer(&out, &in, 8, 8, false, false);
    buffer.sputn("xy", 2);
    buffer.sgetc();
    EXPECT_TRUE(buffer.close());
    EXPECT_TRUE(in.closed && !out.closed);
    EXPECT_EQ(out.sent(), "xy");
    EXPECT_EQ(buffer.sgetc(), kEof);

    out.failSend = 2;
    buffer.sputn("zz", 2);
    buffer.close();
    EXPECT_EQ(buffer.pubsync(), 0);
    EXPECT_EQ(out.sent(), "xy");
    StreamBuf(&out, nullptr, 8, 8, false, false).close();
    EXPECT_TRUE(out.closed);
    errno = ENOENT;
    EXPECT_EQ(buffer.lastError(), "No such file or directory");
}

TEST(StreamBufTest, NewSizesKeepUnreadInputAndDropPendingOutputThatFits) {
    ScriptedCommunicator wire;
    wire.bytes = "abcdef";
    OpenBuf buffer(wire, 8, 8);
    buffer.sbumpc();
    for (const unsigned size : {4U, 0U, 5U, 16U}) buffer.setRecvBufSize(size);  // the first two are too small
    char block[5];
    EXPECT_EQ(buffer.sgetn(block, 5), 5);
    EXPECT_EQ(std::string(block, 5), "bcdef");

    buffer.sputn("12345", 5);
    buffer.setSendBufSize(4);
    EXPECT_EQ(wire.sent(), "12345");
    buffer.sputn("67", 2);
    buffer.setSendBufSize(16);
    buffer.pubsync();
    EXPECT_EQ(wire.sent(), "12345");
    buffer.setRecvBufSize(0);
    EXPECT_EQ(buffer.sgetc(), kEof);
    buffer.sputn("6", 1);
    buffer.setSendBufSize(0);
    EXPECT_EQ(wire.sent(), "123456");
    buffer.setSendBufSize(8);
    wire.failSend = wire.sendCalls + 1;
    buffer.sputn("89", 2);
    buffer.setSendBufSize(1);
    EXPECT_EQ(buffer.pubsync(), 0);
    EXPECT_EQ(wire.sent(), "123456");
}

/// Trickles bytes for ever, at once, and records how long each wait might have taken.
struct Trickle : ScriptedCommunicator {
    std::vector<int> limits;
    using ScriptedCommunicator::waitForData;
    int waitForData(int ms) override { return limits.push_back(ms), WaitData; }
    bool receive(void* data, int& n) override { return *static_cast<char*>(data) = 'x', n = 1, true; }
};

TEST(StreamBufTest, TheDeadlineEndsATrickleAndTheTimeoutEachWait) {
    Trickle wire;
    OpenBuf buffer(wire, 8, 8);
    EXPECT_EQ(buffer.getTimeout(), -1);
    buffer.setTimeout(40);
    buffer.sbumpc();
    EXPECT_EQ(wire.limits.back(), 40);
    buffer.setDeadline(20);
    while (buffer.sbumpc() != kEof) ASSERT_LE(wire.limits.back(), 20);
    EXPECT_GT(wire.limits.size(), 2U);
    char block[2];
    int n = 2;
    const std::size_t waits = wire.limits.size();
    EXPECT_EQ(buffer.waitForData(-1), 3);
    EXPECT_FALSE(buffer.waitForData() || buffer.receive(block, n));
    EXPECT_EQ(buffer.sgetn(block, 2), 0);
    EXPECT_EQ(wire.limits.size(), waits);
    buffer.sputn("ab", 2);
    EXPECT_EQ(buffer.pubsync(), -1);
    EXPECT_EQ(buffer.sputn("123456", 6), 0);
    EXPECT_EQ(wire.sendCalls, 0);

    buffer.setDeadline(-1);
    EXPECT_EQ(buffer.pubsync(), 0);
    EXPECT_EQ(wire.sent(), "ab");
    EXPECT_EQ(buffer.sgetn(block, 2), 2);
    buffer.setTimeout(-1);
    buffer.sbumpc();
    EXPECT_EQ(wire.limits.back(), -1);
    buffer.setDeadline(0);
    EXPECT_EQ(buffer.sgetc(), kEof);
}

}  // namespace
