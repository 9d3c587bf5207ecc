#include <Varnex/streams/Base64.h>
#include <Varnex/streams/obase64decodestream.h>
#include <Varnex/streams/obase64encodestream.h>
#include <tests/support/BoundedTarget.h>

#include <gtest/gtest.h>

#include <random>
#include <sstream>

using namespace Varnex;

namespace {

const int kEof = std::char_traits<char>::eof();

/// Written at once and by single bytes, with a flush after the first `flushAfter`.
std::string wrapped(const std::string& bytes, int width, const std::string& separator, std::size_t flushAfter = 0) {
    std::ostringstream target, slow;
    target.width(width);
    slow.width(width);
    obase64encodestream(target, separator) << bytes.substr(0, flushAfter) << std::flush << bytes.substr(flushAfter);
    EXPECT_EQ(target.width(), width);
    base64encodebuf buffer(slow, separator);
    buffer.pubsetbuf(nullptr, 0);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == flushAfter) buffer.pubsync();
        buffer.sputc(bytes[i]);
    }
    buffer.pubsync();
    EXPECT_EQ(slow.str(), target.str());
    return target.str();
}

TEST(Base64StreamsTest, LinesBreakAtTheWidthOfTheTarget) {
    EXPECT_EQ(wrapped("ManMan", 4, "\r\n"), "TWFu\r\nTWFu");
    EXPECT_EQ(wrapped("ManMan", 3, "\r\n"), "TWF\nuTW\r\nFu");
    EXPECT_EQ(wrapped("ManManMan", 8, "--"), "TWFuTWFu--TWFu");
    EXPECT_EQ(wrapped("M", 2, "\r\n"), "TQ\n==");
    EXPECT_EQ(wrapped("Ma", 3, "\r\n"), "TWE\n=");
    EXPECT_EQ(wrapped("ManMan", 0, "\r\n"), "TWFuTWFu");
    EXPECT_EQ(wrapped("ManMan", -4, "\r\n"), "TWFuTWFu");
    EXPECT_EQ(wrapped("", 4, "\r\n"), "");
    EXPECT_EQ(wrapped("MManMa", 5, "\r\n", 1), "TQ==T\r\nWFuTW\nE=");
}

TEST(Base64StreamsTest, BlocksAndPiecesGiveWhatSingleBytesGive) {
    std::mt19937 random(2);
    for (int width = 0; width < 90; ++width) {
        std::string bytes(random() % 700, 0);
        if (width % 30 == 29) bytes.resize(20000 + random() % 100);
        std::ostringstream target, slowTarget;
        target.width(width);
        slowTarget.width(width);
        base64encodebuf buffer(target, "<separator>"), slow(slowTarget, "<separator>");
        slow.pubsetbuf(nullptr, 0);
        if (width % 3 == 0) buffer.pubsetbuf(nullptr, 0);
        for (std::size_t at = 0; at < bytes.size();) {
            const std::size_t size =
                std::min<std::size_t>(random() % 4 == 0 ? random() % 10000 : random() % 9, bytes.size() - at);
            for (std::size_t i = at; i < at + size; ++i) slow.sputc(bytes[i] = static_cast<char>(random()));
            ASSERT_EQ(buffer.sputn(&bytes[at], static_cast<std::streamsize>(size)), size);
            at += size;
            if (random() % 16 != 0) continue;
            ASSERT_EQ(buffer.pubsync() + slow.pubsync(), 0);
            ASSERT_EQ(target.str(), slowTarget.str()) << width;
        }
        ASSERT_EQ(buffer.pubsync() + slow.pubsync(), 0);
        ASSERT_EQ(target.str(), slowTarget.str()) << width;
    }
}

TEST(Base64StreamsTest, AFlushClosesTheTextAndABareBufferNeedsOne) {
    std::ostringstream target;
    {
        obase64encodestream out(target);
        out << 'M' << std::flush << "Ma" << std::flush << std::flush << "Man" << '\xff';
        EXPECT_EQ(target.str(), "TQ==TWE=");
    }
    EXPECT_EQ(target.str(), "TQ==TWE=TWFu/w==");
    { base64encodebuf(target).sputn("Man", 3); }
    EXPECT_EQ(target.str(), "TQ==TWE=TWFu/w==");
}

TEST(Base64StreamsTest, ATargetThatFailsEndsTheEncodingAfterWhatItTook) {
    const std::string bytes(30000, 'M');
    std::string whole(encodedBase64Size(bytes.size()), 0);
    encodeBase64(whole.data(), bytes.data(), bytes.size());
    for (const std::size_t room : {0, 1, 5000, 39999}) {
        BoundedTarget bounded(room);
        std::ostream target(&bounded);
        obase64encodestream out(target);
        EXPECT_FALSE(out.write(bytes.data(), 30000).flush());
        EXPECT_TRUE(out.bad() && target.bad());
        EXPECT_EQ(bounded.text, whole.substr(0, room));
        base64encodebuf again(target);
        EXPECT_EQ(again.sputn("Man", 3), 3);
        EXPECT_EQ(again.pubsync(), -1);
        EXPECT_EQ(again.sputn(bytes.data(), 30000), 0);
    }
    BoundedTarget bounded(2);
    for (const bool fromBuffer : {false, true}) {
        bounded.throws = fromBuffer;
        std::ostream target(&bounded);
        target.exceptions(fromBuffer ? std::ios::goodbit : std::ios::badbit);
        { obase64encodestream(target) << "Man"; }  // the destructor lets nothing out
        EXPECT_TRUE(target.bad());
        EXPECT_EQ(bounded.text, "TW");
    }
    std::ostream decodedTarget(nullptr);
    EXPECT_FALSE(obase64decodestream(decodedTarget) << "TWFu" << std::flush);
}

std::string readInPieces(std::streambuf& buffer, std::streamsize piece) {
    std::string text, block(static_cast<std::size_t>(piece), 0);
    for (std::streamsize n; (n = buffer.sgetn(block.data(), piece)) > 0;)
        text.append(block, 0, static_cast<std::size_t>(n));
    return text;
}

TEST(Base64StreamsTest, DecodesWrittenTextInAnyPieces) {
    const std::string text = " TW\r\nFu*TWFuTWFu\tTWFuTWFuTWFuTWFuTWFuTWFuTWFuTWFuTQ==ignored";
    const std::string bytes = "ManManManManManManManManManManManM";
    for (std::size_t split = 0; split <= text.size(); ++split) {
        std::ostringstream target;
        obase64decodestream(target) << text.substr(0, split) << std::flush << text.substr(split) << std::flush
                                    << "TWFu";
        EXPECT_EQ(target.str(), bytes);
        char block[64];
        std::ostringstream slow;
        base64decodebuf buffer(slow);
        EXPECT_NE(buffer.pubsetbuf(split % 2 == 0 ? block : nullptr, std::ssize(block)), nullptr);
        for (const char c : text) ASSERT_NE(buffer.sputc(c), kEof);
        buffer.pubsync();
        EXPECT_EQ(slow.str(), bytes);
    }
}

TEST(Base64StreamsTest, ReadsBothWaysWithAnyBuffer) {
    std::mt19937 random(3);
    for (int size = 0; size < 40; ++size) {
        std::string bytes(static_cast<std::size_t>(size < 39 ? size : 30000), 0);
        for (char& c : bytes) c = static_cast<char>(random());
        std::string text(encodedBase64Size(bytes.size()), 0);
        encodeBase64(text.data(), bytes.data(), bytes.size());
        for (const int arraySize : {-1, 0, 2, 3, 4, 5, 7, 64}) {
            const auto array = std::make_unique<char[]>(static_cast<std::size_t>(std::max(arraySize, 0)));
            std::istringstream byteSource(bytes), textSource(text + "=rest");
            base64decodebuf encodes(byteSource);
            base64encodebuf decodes(textSource);
            if (arraySize >= 0) encodes.pubsetbuf(array.get(), arraySize);
            ASSERT_EQ(readInPieces(encodes, 1 + (arraySize + 1) % 5), text);
            if (arraySize >= 0) decodes.pubsetbuf(array.get(), arraySize);
            ASSERT_EQ(readInPieces(decodes, 1 + (arraySize + 1) % 5), bytes);
            EXPECT_EQ(decodes.sgetc(), kEof);
            EXPECT_EQ(textSource.str().substr(static_cast<std::size_t>(textSource.tellg())), size % 3 == 0   ? "rest"
                                                                                             : size % 3 == 1 ? "==rest"
                                                                                                             : "=rest");
        }
    }
}

TEST(Base64StreamsTest, OneArrayServesBothDirectionsAndIsChosenOnce) {
    std::stringstream stream("TWFu", std::ios::in | std::ios::out | std::ios::ate);
    base64encodebuf buffer(stream);
    EXPECT_EQ(buffer.sbumpc(), 'M');
    EXPECT_EQ(buffer.sputc('x'), kEof);  // what was read is still there
    EXPECT_EQ(buffer.sputn("xyz", 3), 0);
    EXPECT_EQ(buffer.pubsync(), -1);
    EXPECT_EQ(buffer.sbumpc(), 'a');
    EXPECT_EQ(buffer.sbumpc(), 'n');
    EXPECT_EQ(buffer.sputn("M", 1), 1);
    EXPECT_EQ(buffer.pubsetbuf(nullptr, 0), nullptr);
    EXPECT_EQ(buffer.sgetc(), 'M');  // flushed first, and so there to be read
    EXPECT_EQ(stream.str(), "TWFuTQ==");

    std::istringstream source("TWFu");
    base64encodebuf reads(source);
    EXPECT_EQ(reads.sputc('x'), kEof);
    EXPECT_EQ(reads.pubsync(), -1);
    base64decodebuf writes(stream);
    char array[2];
    EXPECT_EQ(writes.pubsetbuf(array, 1), &writes);
    EXPECT_EQ(writes.pubsetbuf(array, 2), nullptr);
    std::ostringstream target;
    EXPECT_EQ(base64decodebuf(target).sgetc(), kEof);
}

}  // namespace
