#include <Varnex/url/URLImpl.h>
#include <Varnex/url/inflatebuf.h>
#include <Varnex/url/storebuf.h>
#include <tests/support/FailingCall.h>
#include <tests/support/ThrowsText.h>
#include <tests/url/Deflate.h>

#include <gtest/gtest.h>

#include <climits>
#include <sstream>

using namespace Varnex;

namespace {

const int kEof = std::char_traits<char>::eof();

/// A source that is read from the front only, tells when it is gone, and how it was asked.
struct ForwardBuf : std::stringbuf {
    explicit ForwardBuf(const std::string& text) : std::stringbuf(text, std::ios_base::in) {}
    std::streamsize xsgetn(char* s, std::streamsize n) override {
        asked = n;
        if (throws) throw 1;
        return std::stringbuf::xsgetn(s, n);
    }
    int_type underflow() override { return throws ? throw 1 : std::stringbuf::underflow(); }
    pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override { return off_type(-1); }
    pos_type seekpos(pos_type, std::ios_base::openmode) override { return off_type(-1); }
    std::streamsize showmanyc() override { return -1; }
    std::streamsize asked = 0;
    bool throws = false;
};

struct Source : std::istream {
    Source(std::streambuf* buffer, int* gone = nullptr) : std::istream(buffer), gone_(gone) {}
    ~Source() override {
        if (gone_ != nullptr) ++*gone_;
    }
    int* gone_;
};

std::unique_ptr<std::istream> text(const std::string& content) {
    return std::make_unique<std::istringstream>(content);
}

std::string readAll(std::streambuf& buffer, std::streamsize piece) {
    std::string all, block(static_cast<std::size_t>(piece), '\0');
    std::streamsize n = 0;
    do {
        n = piece == 1 ? buffer.sgetc() != kEof : buffer.sgetn(block.data(), piece);
        if (piece == 1 && n == 1) block[0] = static_cast<char>(buffer.sbumpc());
        all.append(block, 0, static_cast<std::size_t>(n));
    } while (n == piece);
    EXPECT_EQ(buffer.sgetc(), kEof);
    return all;
}

TEST(StorebufTest, GivesExactlyTheStretch) {
    struct Case {
        unsigned long offset, length;
        std::string content;
    };
    const Case cases[] = {{0, 0, ""},     {2, 5, "cdefg"},       {0, 99, "abcdefghij\xff"}, {9, ULONG_MAX, "j\xff"},
                          {11, 5, ""},    {ULONG_MAX, 3, "abc"},  // cannot be moved there: it stays
                          {10, 1, "\xff"}};
    for (const Case& c : cases) {
        for (const std::streamsize piece : {1, 2, 3, 100}) {
            storebuf buffer(text("abcdefghij\xff"), c.offset, c.length);
            EXPECT_EQ(readAll(buffer, piece), c.content) << c.offset << " " << piece;
        }
    }
    ForwardBuf forward("abcdef");
    int gone = 0;
    {
        storebuf buffer(std::make_unique<Source>(&forward, &gone), 2, 3);
        EXPECT_EQ(readAll(buffer, 2), "abc");
        EXPECT_EQ(forward.asked, 1);
        forward.throws = true;
        EXPECT_EQ(buffer.sgetc(), kEof);
    }
    EXPECT_EQ(gone, 1);
}

TEST(StorebufTest, TellsWhatIsReady) {
    storebuf buffer(text("abcdef"), 1, 3);
    EXPECT_EQ(buffer.in_avail(), 3);
    EXPECT_EQ(buffer.sgetc(), 'b');
    EXPECT_EQ(buffer.in_avail(), 1);  // the standard asks the get area first
    EXPECT_EQ(buffer.sbumpc(), 'b');
    EXPECT_EQ(buffer.in_avail(), 2);
    storebuf empty(text(""), 0, 3);
    EXPECT_EQ(empty.in_avail(), 0);
}

TEST(StorebufTest, PutsBack) {
    storebuf buffer(text("abcdefgh"), 1, 5);
    EXPECT_EQ(buffer.sungetc(), kEof);
    EXPECT_EQ(buffer.sbumpc(), 'b');
    EXPECT_EQ(buffer.sputbackc('x'), kEof);
    EXPECT_EQ(buffer.sungetc(), 'b');
    EXPECT_EQ(buffer.sungetc(), kEof);  // "a" is not of the stretch
    char block[4];
    EXPECT_EQ(buffer.sgetn(block, 3), 3);
    EXPECT_EQ(buffer.sputbackc('d'), 'd');
    EXPECT_EQ(buffer.sputbackc('c'), 'c');
    EXPECT_EQ(buffer.sgetc(), 'c');
    EXPECT_EQ(buffer.sungetc(), 'b');
    EXPECT_EQ(readAll(buffer, 2), "bcdef");

    ForwardBuf forward("abc");
    storebuf fixed(std::make_unique<Source>(&forward), 0, 3);
    EXPECT_EQ(fixed.sbumpc(), 'a');
    EXPECT_EQ(fixed.sungetc(), 'a');
    EXPECT_EQ(fixed.sgetn(block, 2), 2);
    EXPECT_EQ(fixed.sungetc(), kEof);  // the source cannot be moved
    EXPECT_EQ(fixed.sbumpc(), 'c');
    EXPECT_EQ(fixed.in_avail(), 0);
}

TEST(StorebufTest, SeeksInTheStretch) {
    storebuf buffer(text("abcdefgh"), 1, 5);
    std::istream stream(&buffer);
    EXPECT_EQ(stream.seekg(3).get(), 'e');
    EXPECT_EQ(stream.tellg(), 4);
    EXPECT_EQ(stream.peek(), 'f');
    EXPECT_EQ(stream.tellg(), 4);
    EXPECT_EQ(stream.seekg(-2, std::ios_base::cur).get(), 'd');
    EXPECT_EQ(stream.seekg(0, std::ios_base::end).tellg(), 5);
    EXPECT_EQ(stream.get(), kEof);
    stream.clear();
    for (const auto& [offset, from] : {std::pair{-1L, std::ios_base::beg},
                                       {6L, std::ios_base::beg},
                                       {1L, std::ios_base::cur},
                                       {-6L, std::ios_base::end},
                                       {LONG_MAX, std::ios_base::end},
                                       {LONG_MIN, std::ios_base::cur}})
        EXPECT_EQ(buffer.pubseekoff(offset, from), std::streampos(-1)) << offset;
    EXPECT_EQ(buffer.pubseekpos(0, std::ios_base::out), std::streampos(-1));
    EXPECT_EQ(stream.seekg(0).get(), 'b');
    storebuf endless(text("abcdefgh"), 5, ULONG_MAX);
    EXPECT_EQ(endless.pubseekoff(-3, std::ios_base::end), std::streampos(-1));  // not before the stretch
}

TEST(InflatebufTest, EveryStreamComesOutWhole) {
    for (std::size_t size : {0UL, 1UL, 2UL, 100UL, 1024UL, 5000UL, 66000UL, 300000UL}) {
        const std::string content = someText(size), coded = deflated(content);
        for (const std::streamsize piece : {1, 100, 1000000}) {
            inflatebuf buffer(text(coded));
            EXPECT_EQ(readAll(buffer, piece), content) << size << " " << piece;
        }
    }
    char block[2];
    inflatebuf mixed(text(deflated("abcd")));
    EXPECT_EQ(mixed.sbumpc(), 'a');
    EXPECT_EQ(mixed.sgetn(block, 2), 2);
    EXPECT_EQ(mixed.sungetc(), kEof);  // not "a"
    // All sizes of the last block, where finished output waits while the input is at its end.
    for (std::size_t size = 0; size < 3000; size += 7) {
        const std::string content = someText(size), coded = deflated(content);
        inflatebuf one(text(coded + "rest")), bulk(text(coded));
        ASSERT_EQ(readAll(one, 1), content) << size;
        ASSERT_EQ(readAll(bulk, 100), content) << size;
    }
}

TEST(InflatebufTest, GivesWhatWasDecodedBeforeAnError) {
    const std::string content = someText(20000), coded = deflated(content);
    for (std::size_t cut = 0; cut < coded.size(); cut += 97) {
        inflatebuf one(text(coded.substr(0, cut))), bulk(text(coded.substr(0, cut)));
        const std::string read = readAll(one, 1);
        EXPECT_TRUE(content.starts_with(read));
        EXPECT_EQ(readAll(bulk, 333), read) << cut;
        EXPECT_GE(read.size() + 400, cut) << "nearly all that came in";
    }
    std::string corrupt = coded;
    corrupt.replace(3000, 40, 40, '\xff');
    inflatebuf buffer(text(corrupt));
    EXPECT_GT(readAll(buffer, 100).size(), 3000U);
    ForwardBuf forward(coded);
    inflatebuf thrown(std::make_unique<Source>(&forward));
    EXPECT_EQ(thrown.sbumpc(), static_cast<unsigned char>(content[0]));
    EXPECT_EQ(forward.asked, 1024);
    forward.throws = true;
    EXPECT_TRUE(content.starts_with(readAll(thrown, 100).insert(0, 1, content[0])));
}

TEST(InflatebufTest, UncompressesIntoMemory) {
    const std::string content = someText(5000);
    std::string out(6000, '\0');
    inflatebuf whole(text(deflated(content)));
    EXPECT_TRUE(whole.uncompress(out.data(), 4999));
    EXPECT_TRUE(whole.uncompress(out.data() + 4999, 1001));
    EXPECT_EQ(out.substr(0, 5000), content);
    EXPECT_FALSE(whole.uncompress(out.data(), 1));
    EXPECT_TRUE(whole.uncompress(out.data(), 0));
    inflatebuf cut(text(deflated(content).substr(0, 100)));
    EXPECT_FALSE(cut.uncompress(out.data(), 6000));
    inflatebuf corrupt(text("\xff\xff"));
    EXPECT_FALSE(corrupt.uncompress(out.data(), 10));
}

TEST(InflatebufTest, FailsToBeginWithoutZlib) {
    int gone = 0;
    std::stringbuf content;
    const FailingCall failing(Call::inflateInit2_, 0, -4);
    EXPECT_THROWS_TEXT(inflatebuf(std::make_unique<Source>(&content, &gone)), URLImpl::Exception,
                       "Cannot initialize zlib");
    EXPECT_EQ(gone, 1);
}

}  // namespace
