#include <tests/events/LargestAllocation.h>
#include <tests/events/Wire.h>

#include <Varnex/events/ibinstream.h>
#include <Varnex/events/obinstream.h>

#include <gtest/gtest.h>

using namespace Varnex;

namespace {

template <class T>
std::string written(const T& value) {
    std::ostringstream stream;
    obinstream(stream) << value;
    return hexOf(stream.str());
}

template <class T>
void expectRead(const std::string& bytes, const T& expected) {
    std::istringstream stream(bytes + "x");
    T value{};
    ibinstream(stream) >> value;
    EXPECT_EQ(value, expected) << hexOf(bytes);
    EXPECT_EQ(stream.get(), 'x') << hexOf(bytes);
}

/// A number is written as `hex`, read back as `read`, and is 0 when the stream ends within it.
template <class T>
void expectNumber(T number, const char* hex, T read) {
    EXPECT_EQ(written(number), hex);
    const std::string bytes = bytesOf(hex);
    expectRead(bytes, read);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        std::istringstream stream(bytes.substr(0, size));
        T value = static_cast<T>(1);
        ibinstream(stream) >> value;
        EXPECT_EQ(value, T{}) << hex;
        EXPECT_TRUE(stream.fail()) << hex;
    }
}

template <class T>
void expectNumber(T number, const char* hex) {
    expectNumber(number, hex, number);
}

TEST(BinaryStreamsTest, NumbersAreBigEndianInTheirWidth) {
    expectNumber(true, "01");
    expectNumber(false, "00");
    expectNumber('c', "63");
    expectNumber<signed char>(-2, "fe");
    expectNumber<unsigned char>(200, "c8");
    expectNumber<short>(-2, "fffe");
    expectNumber<unsigned short>(0xabcd, "abcd");
    expectNumber(-2, "fffffffe");
    expectNumber(0x89abcdefu, "89abcdef");
    expectNumber(-2L, "fffffffe");
    expectNumber(0x180000000L, "80000000", -0x80000000L);
    expectNumber(0xfffffffffffffffeUL, "fffffffe", 0xfffffffeUL);
    expectNumber(-1.5f, "bfc00000");
    expectNumber(0.5, "3fe0000000000000");
    expectRead("\x80", true);
}

TEST(BinaryStreamsTest, TextsHaveA32BitCountAndNoTerminator) {
    EXPECT_EQ(written("ab"), "000000026162");
    EXPECT_EQ(written(""), "00000000");
    EXPECT_EQ(written(std::string("a\0b", 3)), "00000003610062");
    const std::string large(65537, 'x');
    EXPECT_EQ(written(large), "00010001" + hexOf(large));
    expectRead(bytesOf("00000003 610062"), std::string("a\0b", 3));
    expectRead(bytesOf("00010001") + large, large);
    std::istringstream stream(bytesOf("00000000 00000002") + "abc");
    std::string text = "old";
    char array[4] = "???";
    ibinstream(stream) >> text >> array;
    EXPECT_EQ(text, "");
    EXPECT_EQ(std::string(array, 4), std::string("ab\0\0", 4));
    EXPECT_EQ(stream.get(), 'c');
    stream.setstate(std::ios::failbit);
    ibinstream(stream) >> array;
    EXPECT_STREQ(array, "ab");
}

TEST(BinaryStreamsTest, ClaimOf4GiBOnAShortStreamGivesWhatCame) {
    std::istringstream stream(bytesOf("ffffffff") + "short");
    const LargestAllocation largest;
    std::string text = "old";
    ibinstream(stream) >> text;
    EXPECT_EQ(text, "short");
    EXPECT_TRUE(stream.fail());
    EXPECT_LT(largest.bytes(), 200000u);
}

}  // namespace
