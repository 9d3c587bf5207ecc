#include <Varnex/streams/quotedprintabledecodebuf.h>
#include <Varnex/streams/quotedprintableencodebuf.h>
#include <Varnex/streams/urlbuf.h>
#include <tests/support/BoundedTarget.h>

#include <gtest/gtest.h>

#include <sstream>

using namespace Varnex;

namespace {

const int kEof = std::char_traits<char>::eof();

/// By single characters before `split`, then at once.
template <class Buffer>
std::string through(const std::string& text, std::size_t split, bool headerMode) {
    std::stringbuf target;
    Buffer buffer(&target, headerMode);
    for (const char c : text.substr(0, split)) EXPECT_EQ(buffer.sputc(c), static_cast<unsigned char>(c));
    EXPECT_EQ(buffer.pubsync(), 0);
    const std::string rest = text.substr(split);
    EXPECT_EQ(buffer.sputn(rest.data(), std::ssize(rest)), std::ssize(rest));
    return target.str();
}

struct Coded {
    std::string from, to;
    bool headerMode = false;
};

template <class Buffer>
void expectEverySplit(std::span<const Coded> cases) {
    for (const auto& [from, to, headerMode] : cases) {
        for (std::size_t split = 0; split <= from.size(); ++split)
            EXPECT_EQ(through<Buffer>(from, split, headerMode), to) << testing::PrintToString(from) << split;
    }
}

const std::string kLong(10000, '=');

std::string repeated(const std::string& text, int times) {
    std::string all;
    while (times-- > 0) all += text;
    return all;
}

TEST(QuotedPrintableTest, Encodes) {
    const Coded cases[] = {{"a=b", "a=3Db"},
                           {"\xe9\xff\x7f~!", "=E9=FF=7F~!"},
                           {"\rx", "=0Dx"},
                           {"a\nb\r\nc", "a\r\nb\r\nc"},
                           {"\r\r\n\n\r", "=0D\r\n\r\n"},  // the last one waits
                           {"a \t_?\n", "a \t_?\r\n"},
                           {"a b?", "a_b=3F", true},
                           {"_\t=\r.\n\x80", "=5F=09=3D=0D.\r\n=80", true},
                           {std::string(200, 'x'), std::string(200, 'x')}};
    expectEverySplit<quotedprintableencodebuf>(cases);
    EXPECT_EQ(through<quotedprintableencodebuf>(kLong, 0, false), repeated("=3D", 10000));
}

TEST(QuotedPrintableTest, DecodesAndKeepsWhatIsNoCode) {
    const Coded cases[] = {{"a=3Db=e9", "a=b\xe9"},
                           {"a=\r\nb=\nc= \t\r\nd= \ne", "abcde"},
                           {"=0D\r\n\n", "\r\r\n\n"},
                           {"=4x=x4==3D= 41=\rx=\r=41",
                            "=4x=x4=="
                            "= 41=\rx=\rA"},
                           {"=4\n=4=41", "=4\n=4A"},
                           {"_ \x80", "_ \x80"},
                           {"a_b=5F=3f", "a b_?", true},
                           {"x=", "x"},
                           {"x=4", "x"},
                           {"=" + std::string(998, ' ') + "\n", ""},
                           {"=" + std::string(999, ' ') + "\n", "=" + std::string(999, ' ') + "\n"}};
    expectEverySplit<quotedprintabledecodebuf>(cases);
    EXPECT_EQ(through<quotedprintabledecodebuf>(repeated("=3D", 10000), 0, false), kLong);
    std::string bytes;
    for (int c = 0; c < 256; ++c) bytes += c == '\n' ? "" : std::string(1, static_cast<char>(c));
    for (const bool headerMode : {false, true}) {
        const std::string text = through<quotedprintableencodebuf>(bytes, 9, headerMode);
        EXPECT_EQ(through<quotedprintabledecodebuf>(text, 9, headerMode), bytes);
    }
}

template <class Buffer>
void expectStops(std::size_t room, const std::string& text, std::streamsize taken, const std::string& result) {
    BoundedTarget target(room);
    Buffer buffer(&target);
    std::streamsize n = 0;
    while (n < std::ssize(text) && buffer.sputc(text[static_cast<std::size_t>(n)]) != kEof) ++n;
    EXPECT_EQ(n, taken);
    EXPECT_EQ(target.text, result);
    BoundedTarget bulkTarget(room);
    EXPECT_EQ(Buffer(&bulkTarget).sputn(text.data(), std::ssize(text)), 0);
    EXPECT_EQ(bulkTarget.text, result);
    buffer.pubsync();
    EXPECT_EQ(target.syncs, 1);
    Buffer none(nullptr);
    EXPECT_EQ(none.sputc('x'), kEof);
    EXPECT_EQ(none.pubsync(), -1);
}

struct OpenEncoder : quotedprintableencodebuf {
    using quotedprintableencodebuf::overflow, quotedprintableencodebuf::quotedprintableencodebuf;
};

TEST(QuotedPrintableTest, StopsWhereTheTargetRefuses) {
    expectStops<quotedprintableencodebuf>(4, "ab=cd", 2, "ab=3");
    expectStops<quotedprintableencodebuf>(0, "\rx", 1, "");
    EXPECT_EQ(OpenEncoder(nullptr).overflow(kEof), 0);
    expectStops<quotedprintabledecodebuf>(2, "a=3Dbc", 4, "a=");
}

TEST(UrlbufTest, EncodesByItsSets) {
    const auto encoded = [](const std::string& text, const char* always, const char* allowed, std::streamsize piece) {
        std::ostringstream target;
        urlbuf buffer(target, always, allowed);
        for (std::size_t at = 0; at < text.size(); at += static_cast<std::size_t>(piece)) {
            const std::string part = text.substr(at, static_cast<std::size_t>(piece));
            EXPECT_EQ(buffer.sputn(part.data(), std::ssize(part)), std::ssize(part));
        }
        EXPECT_EQ(buffer.pubsync(), 0);
        return target.str();
    };
    for (const std::streamsize piece : {1, 2, 100000}) {
        EXPECT_EQ(encoded("aZ09-_.!~* ()", "", "", piece), "aZ09-_.!~* ()");
        EXPECT_EQ(encoded("a+b/c?\xff%\n'", "", "", piece), "a%2Bb%2Fc%3F%FF%25%0A%27");
        EXPECT_EQ(encoded(std::string("\0 a/", 4), " a", "/", piece), "%00%20%61/");
        EXPECT_EQ(encoded("//", "/", "/", piece), "%2F%2F");
        EXPECT_EQ(encoded(kLong, "", "", piece), repeated("%3D", 10000));
    }
    BoundedTarget bounded(4);
    std::ostream target(&bounded);
    urlbuf buffer(target);
    EXPECT_EQ(buffer.sputn("ab/cd", 5), 5);
    EXPECT_EQ(buffer.pubsync(), -1);
    EXPECT_EQ(bounded.text, "ab%2");
    EXPECT_TRUE(target.bad());
}

TEST(UrlbufTest, DecodesTwoDigitsAndLeavesTheRest) {
    const Coded cases[] = {{"a%2fb%2FC+d", "a/b/C+d"},
                           {"%00%ff", std::string("\0\xff", 2)},
                           {"%", "%"},
                           {"%4", "%4"},
                           {"%4z%z4%%41%4%41%", "%4z%z4%A%4A%"},
                           {"%2541", "%41"},
                           {repeated("%3D", 10000), kLong}};
    for (const auto& [from, to, headerMode] : cases) {
        for (const int array : {-1, 0, 2, 3}) {
            std::istringstream source(from);
            urlbuf buffer(source);
            char block[3];
            if (array >= 0) buffer.pubsetbuf(block, array);
            std::ostringstream read;
            if (!from.empty()) read << &buffer;
            EXPECT_EQ(read.str(), to);
        }
    }
}

}  // namespace
