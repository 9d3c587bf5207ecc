#include <Varnex/streams/Digest.h>
#include <Varnex/streams/SecureRandom.h>
#include <Varnex/streams/Trim.h>
#include <tests/support/FailingCall.h>

#include <gtest/gtest.h>

#include <cctype>

using namespace Varnex;

namespace {

std::string hex(const std::string& bytes) {
    std::string text;
    for (const unsigned char c : bytes) text += {"0123456789ABCDEF"[c >> 4], "0123456789ABCDEF"[c & 15]};
    return text;
}

std::string sha1(const char* data, unsigned length, int other = 0) {
    std::string out(20, 'x');
    return calcSHA1Hash(other, length, data, out.data()) ? hex(out) : "refused " + out;
}

std::string md5(const char* data, unsigned length) {
    std::string out(16, 'x');
    return calcMD5Hash(0, length, data, out.data()) ? hex(out) : "refused " + out;
}

const std::string kUnchanged = "refused xxxxxxxxxxxxxxxxxxxx";

TEST(DigestTest, TakesTheLengthFromEitherArgument) {
    EXPECT_EQ(sha1("abcd", 3), "A9993E364706816ABA3E25717850C26C9CD0D89D");
    EXPECT_EQ(sha1("abcd", 3, -1), "A9993E364706816ABA3E25717850C26C9CD0D89D");
    EXPECT_EQ(sha1("abcd", 0, 3), "A9993E364706816ABA3E25717850C26C9CD0D89D");
    EXPECT_EQ(sha1(nullptr, 0), "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709");
    EXPECT_EQ(sha1("abc", 0, -1), kUnchanged);
    EXPECT_EQ(sha1("abc", static_cast<unsigned>(-1)), kUnchanged);
    EXPECT_EQ(sha1(nullptr, 1), kUnchanged);
}

TEST(DigestTest, MD5AlwaysTakesSixteenBytes) {
    for (const unsigned length : {0U, 3U, 16U, 99U})
        EXPECT_EQ(md5("0123456789abcdef and more", length), "4032AF8D61035123906E58E067140CC5");
}

TEST(DigestTest, AFailingLibraryLeavesTheResultUnchanged) {
    const FailingCall digest(Call::EVP_Digest, 0, 0, 2);
    EXPECT_EQ(sha1("abc", 3), kUnchanged);
    EXPECT_EQ(md5("0123456789abcdef", 16), kUnchanged.substr(0, 24));
    const FailingCall random(Call::RAND_bytes, 0, 0);
    char bytes[8];
    EXPECT_FALSE(secureRandom(bytes, sizeof bytes));
}

TEST(DigestTest, RandomBytesDifferAndStayInTheirBlock) {
    std::string a(16, 0), b(18, 'x');
    ASSERT_TRUE(secureRandom(a.data(), 16) && secureRandom(b.data() + 1, 16) && secureRandom(nullptr, 0));
    EXPECT_NE(a, b.substr(1, 16));
    EXPECT_EQ(b.front(), 'x');
    EXPECT_EQ(b.back(), 'x');
}

// Used by a static object's constructor, as constants of a library are.
const std::string kBeforeMain = std::string(ws) + std::string(guid);

TEST(TrimTest, RemovesSpacesAndTabsAtBothEndsAlone) {
    EXPECT_EQ(kBeforeMain, " \t258EAFA5-E914-47DA-95CA-C5AB0DC85B11");
    const std::pair<std::string, std::string> cases[] = {{"\t  ", ""},     {"", ""},         {" a b\t", "a b"},
                                                         {" a\r ", "a\r"}, {"\n a", "\n a"}, {"a", "a"}};
    for (auto [text, trimmed] : cases) {
        trim(text);
        EXPECT_EQ(text, trimmed);
    }
}

}  // namespace
