#include <Varnex/protocols/ChunkedReader.h>
#include <Varnex/protocols/ChunkedWriter.h>
#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/streams/iStream.h>
#include <tests/support/BoundedTarget.h>
#include <tests/support/Scripted.h>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

using namespace Varnex;
using namespace std::string_literals;

namespace {

using Pieces = std::vector<std::size_t>;
using Prepare = std::function<void(ChunkedReader&)>;

/// What is read of a source that gives its bytes in `pieces`, in blocks or, when that is 0, one by one: the body, the
/// trailer and what is left behind it; nothing for a body that is damaged.
std::string readOf(const std::string& text, const Pieces& pieces = {}, std::size_t block = 7,
                   const Prepare& prepare = {}) {
    ScriptedReceiver wire;
    wire.bytes = text;
    wire.pieceSizes = pieces;
    iStream source(&wire, false);
    ChunkedReader reader(source);
    if (prepare) prepare(reader);
    std::istream in(&reader);
    std::string all;
    for (std::string piece(block, '\0'); in.good();) {
        if (block == 0 && in.peek() != EOF) all += static_cast<char>(in.get());
        if (block > 0)
            all.append(piece, 0, static_cast<std::size_t>(in.read(piece.data(), std::ssize(piece)).gcount()));
    }
    EXPECT_NE(in.bad(), reader.isComplete());
    EXPECT_TRUE(source.good());
    if (!reader.isComplete()) {
        EXPECT_TRUE(reader.getTrailer().empty());
        EXPECT_THROW(reader.sgetc(), std::ios_base::failure);
        return "";
    }
    for (const auto& [name, value] : reader.getTrailer().params())
        all.append("|").append(name).append("=").append(value);
    return all + "|" + std::string(std::istreambuf_iterator<char>(source), {});
}

TEST(ChunkedReaderTest, ReadsWholeInPiecesAndSplitAnywhere) {
    const std::pair<std::string, std::string> cases[] = {
        {"5\r\nhello\r\n00A;n=\"v;\"\t\xff\r\n0123456789\r\n1\t ;x\r\n\n\r\n0\r\n\r\nGET /", "hello0123456789\n|GET /"},
        {"3\r\n\0\r\n\r\n000\r\nA: b\r\nc:\r\n\r\n\r\nx"s, "\0\r\n|A=b|c=|\r\nx"s},
        {"0\r\n\r\n", "|"},
        {"0;last\r\nA: b\r\nc:d\r\n\r\n\r\nHTTP/1.1", "|A=b|c=d|\r\nHTTP/1.1"}};
    for (const auto& [text, expected] : cases) {
        for (const std::size_t block : {0U, 1U, 3U, 7U, 10000U}) {
            EXPECT_EQ(readOf(text, {}, block), expected);
            EXPECT_EQ(readOf(text, {1}, block), expected);
            for (std::size_t cut = 1; cut < text.size(); ++cut)
                EXPECT_EQ(readOf(text, {cut, text.size()}, block), expected) << cut << " " << block;
        }
    }
}

TEST(ChunkedReaderTest, CutAnywhereIsNotComplete) {
    const std::string text = "5;x\r\nhello\r\n3\r\nabc\r\n0\r\nA: b\r\n\r\n";
    EXPECT_EQ(readOf(text), "helloabc|A=b|");
    for (std::size_t size = 0; size < text.size(); ++size)
        for (const std::size_t block : {0U, 4U, 8U, 100U})
            EXPECT_EQ(readOf(text.substr(0, size), {}, block), "") << size;
}

TEST(ChunkedReaderTest, RefusesDamage) {
    for (const std::string bad : {"5\nhello\r\n0\r\n\r\n",
                                  "5\r\nhello\n0\r\n\r\n",
                                  "5\r\nhellox\r\n0\r\n\r\n",
                                  "5\r\nhello\r\n0\r\n\n",
                                  "5\r\nhello\r\n0\n\r\n",
                                  "5\r\nhello\r\n\r\n0\r\n\r\n",
                                  "\r\n0\r\n\r\n",
                                  " 0\r\n\r\n",
                                  ";x\r\n\r\n",
                                  "-1\r\na\r\n0\r\n\r\n",
                                  "0x1\r\na\r\n0\r\n\r\n",
                                  "100000000\r\n\r\n",
                                  "fffffffffffffffff\r\na",
                                  "FFFFFFFF\r\nabc",
                                  "1;a\nb\r\na\r\n0\r\n\r\n",
                                  "1;a\rb\r\na\r\n0\r\n\r\n",
                                  "1;a\x7f\r\na\r\n0\r\n\r\n",
                                  "0\r\nA: b\n\r\n",
                                  "0\r\nA: b\r\n c\r\n\r\n",
                                  "0\r\n A: b\r\n\r\n",
                                  "0\r\nA: b\rc\r\n\r\n",
                                  "0\r\nnothing\r\n\r\n"})
        for (const std::size_t block : {0U, 100U}) EXPECT_EQ(readOf(bad, {}, block), "") << bad;
    EXPECT_EQ(readOf("0\r\nA: \0\r\n\r\n"s), "");
}

TEST(ChunkedReaderTest, HasLimits) {
    const std::string end = "\r\na\r\n0\r\n\r\n", many(255, 'x');
    std::string padded, lines = "0\r\n";
    for (int i = 0; i < 10; ++i) padded += "001;x\r\na\r\n";
    for (int i = 0; i < 256; ++i) lines += "n: v\r\n";
    struct Case {
        std::string text;
        Prepare allow, refuse;
    };
    const Case cases[] = {
        {"1;" + std::string(4094, 'x') + end, {}, [](auto& reader) { reader.setMaxSizeLine(4095); }},
        {"1;" + std::string(4095, 'x') + end, [](auto& reader) { reader.setMaxSizeLine(0); }, {}},
        {std::string(4096, '0') + "1" + end, [](auto& reader) { reader.setMaxSizeLine(0); }, {}},
        {"3\r\nabc\r\n1" + end, [](auto& r) { r.setMaxBody(4); }, [](auto& reader) { reader.setMaxBody(3); }},
        {padded + "1" + end, [](auto& r) { r.setMaxOverhead(41); }, [](auto& reader) { reader.setMaxOverhead(40); }}};
    for (const Case& c : cases) {
        EXPECT_NE(readOf(c.text, {}, 7, c.allow), "") << c.text.substr(0, 50);
        EXPECT_EQ(readOf(c.text, {}, 7, c.refuse), "") << c.text.substr(0, 50);
    }
    EXPECT_EQ(readOf(lines + "\r\n"), "");
    EXPECT_EQ(readOf("0\r\na: " + std::string(65534, 'x') + "\r\n\r\n"), "");
}

TEST(ChunkedReaderTest, WaitsForNoMoreThanThereIs) {
    ScriptedReceiver wire;
    wire.bytes = "a\r\nabc";
    wire.stalls = true;
    iStream source(&wire, false);
    ChunkedReader reader(source);
    EXPECT_EQ(reader.sbumpc(), 'a');
    EXPECT_EQ(reader.in_avail(), 2);
    EXPECT_EQ(wire.waits, 1);
}

TEST(ChunkedWriterTest, WritesChunks) {
    std::ostringstream target;
    target << std::hex << std::showbase << std::uppercase;
    ChunkedWriter writer(target, 16);
    std::ostream out(&writer);
    out << std::flush << ""
        << "abcdefghij"
        << "klmnopqrstuvwxyz" << 'x' << std::flush << std::flush;
    EXPECT_EQ(target.str(), "a\r\nabcdefghij\r\n10\r\nklmnopqrstuvwxyz\r\n1\r\nx\r\n");
    target.str("");
    for (int i = 0; i < 17; ++i) out.put('.');
    EXPECT_EQ(target.str(), "10\r\n................\r\n");
    target.str("");
    out << std::string(26, '+') << 'y';
    EXPECT_EQ(target.str(), "1\r\n.\r\n1a\r\n" + std::string(26, '+') + "\r\n");
    target.str("");
    MessageHeader trailer;
    trailer.setParam("A", "b");
    EXPECT_TRUE(writer.finish(trailer));
    EXPECT_EQ(target.str(), "1\r\ny\r\n0\r\nA: b\r\n\r\n");
    EXPECT_TRUE(out.flush());
    EXPECT_FALSE(writer.finish());
    EXPECT_FALSE(out << "z");
    EXPECT_EQ(writer.sputc('z'), EOF);
    EXPECT_EQ(target.str().size(), 17U);
}

TEST(ChunkedWriterTest, DoesNotFinishAlone) {
    std::ostringstream target;
    { std::ostream(std::make_unique<ChunkedWriter>(target).get()) << "abc" << std::flush << "def"; }
    EXPECT_EQ(target.str(), "3\r\nabc\r\n");
    ChunkedWriter empty(target);
    EXPECT_TRUE(empty.finish());
    EXPECT_EQ(target.str(), "3\r\nabc\r\n0\r\n\r\n");
}

TEST(ChunkedWriterTest, FailsForGood) {
    for (const bool throws : {false, true}) {
        BoundedTarget wire(5);
        wire.throws = throws;
        std::ostream target(&wire);
        ChunkedWriter writer(target, 4);
        EXPECT_EQ(writer.sputn("abc", 3), 3);
        EXPECT_EQ(writer.sputn("def", 3), 0);
        target.clear();
        EXPECT_EQ(writer.sputc('x'), EOF);
        EXPECT_EQ(writer.pubsync(), -1);
        EXPECT_FALSE(writer.finish());
        EXPECT_EQ(wire.text, throws ? "" : "3\r\nab");
    }
}

TEST(ChunkedTest, EveryBlockSizeComesBack) {
    std::string text;
    for (int i = 0; i < 30000; ++i) text += static_cast<char>(i * 7 + i / 256);
    for (const std::size_t piece : {1U, 100U, 8191U, 8192U, 8193U, 30000U}) {
        std::stringstream wire;
        ChunkedWriter writer(wire);
        for (std::size_t at = 0; at < text.size(); at += piece) {
            const std::string_view part = std::string_view(text).substr(at, piece);
            EXPECT_EQ(writer.sputn(part.data(), std::ssize(part)), std::ssize(part));
        }
        EXPECT_TRUE(writer.finish());
        EXPECT_EQ(readOf(wire.str() + "next", {}, 1 + 30000 / piece), text + "|next") << piece;
    }
}

}  // namespace
