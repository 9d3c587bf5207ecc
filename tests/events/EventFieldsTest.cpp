#include <tests/events/Wire.h>

#include <Varnex/events/ibinstream.h>
#include <Varnex/events/obinstream.h>

using namespace Varnex;

namespace {

template <class T>
T take(ProbeEvent& event) {
    T value = static_cast<T>(1);
    event.getField(value);
    return value;
}

template <class... Value>
std::string written(Value... value) {
    ProbeEvent event([=](ProbeEvent& e) { e.addField(value...); });
    return wireOf(event).substr(12);
}

/// `value` has these bytes as a field and in a binary stream, where it can be there, and is read back as `back`; when
/// bytes are missing it is 0, the position stays and the stream fails.
template <class T>
void expectNumber(T value, const char* field, const char* streamed, T back) {
    if constexpr (requires(ProbeEvent e) { e.getField(value); }) {
        const std::string bytes = bytesOf(field);
        EXPECT_EQ(written(value), bytes);
        EXPECT_EQ(ProbeEvent().readFields(bytes + "x", take<T>), std::pair(back, bytes.size())) << field;
        for (std::size_t size = 0; size < bytes.size(); ++size)
            EXPECT_EQ(ProbeEvent().readFields(bytes.substr(0, size), take<T>), std::pair(T{}, std::size_t{0})) << field;
    }
    if constexpr (requires(obinstream s) { s << value; }) {
        std::ostringstream out;
        obinstream(out) << value;
        EXPECT_EQ(out.str(), bytesOf(streamed));
        for (std::size_t size = 0; size <= out.str().size(); ++size) {
            std::istringstream in(out.str().substr(0, size));
            T read = static_cast<T>(1);
            ibinstream(in) >> read;
            EXPECT_EQ(read, in ? back : T{}) << streamed;
            EXPECT_EQ(in.good(), size == out.str().size()) << streamed;
        }
    }
}

TEST(EventFieldsTest, NumbersAreBigEndianInTheirWidthInEventsAndStreams) {
    expectNumber(true, "0001", "01", true);
    expectNumber(false, "0000", "00", false);
    expectNumber('c', "", "63", 'c');
    expectNumber<signed char>(-2, "", "fe", -2);
    expectNumber<unsigned char>(200, "", "c8", 200);
    expectNumber<short>(-2, "fffe", "fffe", -2);
    expectNumber<unsigned short>(0xabcd, "abcd", "abcd", 0xabcd);
    expectNumber(-2, "fffffffe", "fffffffe", -2);
    expectNumber(0x89abcdefu, "89abcdef", "89abcdef", 0x89abcdefu);
    expectNumber(0x1fffffffeL, "fffffffe", "fffffffe", -2L);
    expectNumber(0xfffffffffffffffeUL, "fffffffe", "fffffffe", 0xfffffffeUL);
    expectNumber(0x0102030405060708ull, "0102030405060708", "", 0x0102030405060708ull);
    expectNumber(1.0f, "3f800000", "3f800000", 1.0f);
    expectNumber(-1.5, "bff8000000000000", "bff8000000000000", -1.5);
    EXPECT_TRUE(ProbeEvent().readFields(bytesOf("0100"), take<bool>).first) << "any bit is true";
}

TEST(EventFieldsTest, TextsHaveA16BitCountAndRawBytesNone) {
    EXPECT_EQ(written(std::string("a\0b", 3)), bytesOf("0003610062"));
    EXPECT_EQ(written(std::string()), bytesOf("0000"));
    EXPECT_EQ(written("abc"), "abc");
    EXPECT_EQ(written("abc", 2), "ab");
    EXPECT_EQ(written("abc", 0) + written("abc", -2) + written(static_cast<const char*>(nullptr), 3), "");
    const CapturedDiagnostics lines;
    EXPECT_TRUE(written(std::string(65538, 'x')) == bytesOf("0002") + std::string(65538, 'x'));
}

/// Reads a text, or so many raw bytes.
template <int... Size>
std::string readText(ProbeEvent& event) {
    std::string value = "old.";
    if constexpr (sizeof...(Size) == 0)
        event.getField(value);
    else
        event.getField(value.data(), Size...);
    return value;
}

TEST(EventFieldsTest, TextsAndRawBytesAreReadWithinTheEventOnly) {
    const std::string longest(32767, 'x');
    const std::tuple<std::string, std::string (*)(ProbeEvent&), std::string, std::size_t> all[] = {
        {bytesOf("0002616263"), readText<>, "ab", 4},
        {bytesOf("000061"), readText<>, "", 2},
        {bytesOf("00"), readText<>, "", 0},
        {bytesOf("00030102"), readText<>, "old.", 2},  // a count above the rest
        {bytesOf("80000102"), readText<>, "", 2},      // a count with a sign
        {bytesOf("7fff") + longest, readText<>, longest, 32769},
        {"abc", readText<2>, "abd.", 2},
        {"abc", readText<3>, "abc.", 3},
        {"abc", readText<4>, "old.", 0},
        {"abc", readText<-1>, "old.", 0},
    };
    for (const auto& [bytes, read, value, taken] : all)
        EXPECT_EQ(ProbeEvent().readFields(bytes, read), std::pair(value, taken));
}

TEST(EventFieldsTest, BufferDoublesWithOneLineForEachGrowthAndUpTo1024BytesAllocatesNothing) {
    const std::string line = "Varnex::Event: Resize buffer to ";
    const std::tuple<std::size_t, std::size_t, std::string> all[] = {
        {0, 1, ""},
        {1012, 1012, ""},
        {1013, 1013, line + "2048\n"},
        {1488, 1, line + "2048\n"},
        {4988, 4988, line + "8192\n"},
        {4988, 4, line + "2048\n" + line + "4096\n" + line + "8192\n"}};
    std::string content;
    for (int i = 0; i < 4988; ++i) content += static_cast<char>(i % 251);
    std::ostream nowhere(nullptr);
    for (const auto& [size, step, lines] : all) {
        ProbeEvent event([&, last = size, width = step](ProbeEvent& e) {
            for (std::size_t i = 0; i < last; i += width) e.addData(&content[i], static_cast<long>(width));
        });
        ScriptedSender sender;
        sender.taken.reserve(5000);
        const CapturedDiagnostics printed;
        largestAllocation = 0;
        EXPECT_TRUE(event.send(&sender));
        nowhere << event;
        EXPECT_EQ(largestAllocation == 0, size <= 1012) << size;
        EXPECT_EQ(event._buffer, nullptr);
        EXPECT_EQ(sender.sent().substr(12), content.substr(0, size));
        EXPECT_EQ(printed.errors(), lines + lines);
    }
}

TEST(BinaryStreamsTest, TextsHaveA32BitCountAndTakeNoMoreThanCame) {
    const std::string large(65537, 'x');
    std::ostringstream out;
    obinstream(out) << std::string("a\0b", 3) << "" << large << "ab";
    EXPECT_TRUE(out.str() == bytesOf("00000003 610062 00000000 00010001") + large + bytesOf("00000002 6162"));
    std::istringstream in(out.str() + bytesOf("ffffffff") + "short");
    std::string nul, empty = "old", back, cut;
    char array[4] = "???";
    ibinstream(in) >> nul >> empty >> back >> array;
    EXPECT_TRUE(in.good() && nul == std::string("a\0b", 3) && empty.empty() && back == large);
    EXPECT_EQ(std::string(array, 4), std::string("ab\0\0", 4));
    largestAllocation = 0;
    ibinstream(in) >> cut >> array;
    EXPECT_EQ(cut, "short");
    EXPECT_TRUE(in.fail());
    EXPECT_STREQ(array, "ab") << "without a count";
    EXPECT_LT(largestAllocation, 200000u);
}

}  // namespace
