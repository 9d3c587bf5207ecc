#include <tests/events/ProbeEvent.h>
#include <tests/support/CapturedDiagnostics.h>

#include <Varnex/events/MessageEvent.h>

#include <gtest/gtest.h>

namespace {

struct Written {
    const char* name;
    ProbeEvent::Action write;
    const char* hex;
};

template <class T>
Written written(const char* name, T value, const char* hex) {
    return {name, [value](ProbeEvent& e) { e.addField(value); }, hex};
}

Written rawBytes(const char* name, const char* data, int length, const char* hex) {
    return {name, [=](ProbeEvent& e) { e.addField(data, length); }, hex};
}

TEST(EventFieldsTest, EachValueIsWrittenBigEndianInItsWidth) {
    const Written all[] = {
        written("true", true, "0001"),
        written("false", false, "0000"),
        written<short>("short", -2, "fffe"),
        written<unsigned short>("unsigned short", 0xabcd, "abcd"),
        written("int", -2, "fffffffe"),
        written("unsigned int", 0x89abcdefu, "89abcdef"),
        written("long", -2L, "fffffffe"),
        written("low bits of a long", 0x123456789L, "23456789"),
        written("low bits of an unsigned long", 0xffffffff01020304UL, "01020304"),
        {"64 bits", [](ProbeEvent& e) { e.addFieldUInt64(0x0102030405060708); }, "0102030405060708"},
        written("float", 1.0f, "3f800000"),
        written("double", -1.0, "bff0000000000000"),
        written<std::string>("text", "ab", "0002 6162"),
        written("text with a NUL", std::string("a\0b", 3), "0003 610062"),
        written<std::string>("empty text", "", "0000"),
        rawBytes("raw bytes", "abc", 2, "6162"),
        rawBytes("raw bytes to the terminator", "abc", -1, "616263"),
        rawBytes("no raw bytes", "abc", 0, ""),
        rawBytes("negative number of raw bytes", "abc", -2, ""),
        rawBytes("null raw bytes", nullptr, 3, ""),
        {"negative data", [](ProbeEvent& e) { e.addData("abc", -1); }, ""},
    };
    for (const auto& [name, write, hex] : all) {
        ProbeEvent event(write);
        EXPECT_EQ(hexOf(wireOf(event).substr(12)), digits(hex)) << name;
    }
}

struct Taken {
    const char* name;
    const char* hex;
    std::function<std::string(ProbeEvent&)> take;
    const char* expected;  ///< the value and, behind "@", the bytes consumed
};

template <class T>
std::string number(ProbeEvent& event) {
    std::ostringstream text;
    T value = static_cast<T>(1);
    event.getField(value);
    text << value;
    return text.str();
}

std::string uint64(ProbeEvent& event) {
    unsigned long long value = 1;
    event.getFieldUInt64(value);
    return std::to_string(value);
}

std::string text(ProbeEvent& event) {
    std::string value = "old";
    event.getField(value);
    return value;
}

std::string textThenShort(ProbeEvent& event) {
    const std::string first = text(event);
    return first + number<short>(event);
}

template <int N>
std::string raw(ProbeEvent& event) {
    std::string field = "....";
    event.getField(field.data(), N);
    return field;
}

TEST(EventFieldsTest, EachValueIsReadInItsWidthOrNotAtAll) {
    const Taken all[] = {
        {"false", "0000", number<bool>, "0@2"},
        {"any bit is true", "0100", number<bool>, "1@2"},
        {"short", "fffe00", number<short>, "-2@2"},
        {"unsigned short", "fffe", number<unsigned short>, "65534@2"},
        {"int", "fffffffe", number<int>, "-2@4"},
        {"unsigned int", "fffffffe", number<unsigned int>, "4294967294@4"},
        {"long, sign-extended", "fffffffe00000000", number<long>, "-2@4"},
        {"unsigned long, zero-extended", "fffffffe", number<unsigned long>, "4294967294@4"},
        {"64 bits", "0000000100000002", uint64, "4294967298@8"},
        {"float", "bfc00000", number<float>, "-1.5@4"},
        {"double", "3fe0000000000000", number<double>, "0.5@8"},
        {"half a bool", "01", number<bool>, "0@0"},
        {"half a short", "01", number<short>, "0@0"},
        {"nothing of an unsigned short", "", number<unsigned short>, "0@0"},
        {"3 bytes of an int", "010101", number<int>, "0@0"},
        {"3 bytes of an unsigned int", "010101", number<unsigned int>, "0@0"},
        {"3 bytes of a long", "010101", number<long>, "0@0"},
        {"3 bytes of an unsigned long", "010101", number<unsigned long>, "0@0"},
        {"7 bytes of 64 bits", "01010101010101", uint64, "0@0"},
        {"3 bytes of a float", "3f8000", number<float>, "0@0"},
        {"7 bytes of a double", "3ff00000000000", number<double>, "0@0"},
        {"text", "0002 6162 63", text, "ab@4"},
        {"empty text", "0000 61", text, "@2"},
        {"text past the end", "", text, "@0"},
        {"half a count of text", "00", text, "@0"},
        {"count above the rest", "0003 6162", text, "old@2"},
        {"count above the rest, next field", "0003 0102", textThenShort, "old258@4"},
        {"negative count", "8000 6162", text, "@2"},
        {"negative count, next field", "ffff 0102", textThenShort, "258@4"},
        {"raw bytes", "616263", raw<2>, "ab..@2"},
        {"all raw bytes", "616263", raw<3>, "abc.@3"},
        {"too many raw bytes", "616263", raw<4>, "....@0"},
        {"no raw bytes", "616263", raw<0>, "....@0"},
        {"negative number of raw bytes", "616263", raw<-1>, "....@0"},
    };
    for (const auto& [name, hex, take, expected] : all)
        EXPECT_EQ(ProbeEvent().readFields(bytesOf(hex), take), expected) << name;
}

TEST(EventFieldsTest, TextOfUpTo32767BytesComesBack) {
    const CapturedDiagnostics lines;
    for (const std::size_t size : {32767u, 32768u, 65535u}) {
        Varnex::MessageEvent event(1, std::string(size, 'x').c_str());
        const auto back = parsed(wireOf(event));
        EXPECT_EQ(dynamic_cast<Varnex::MessageEvent&>(*back).getText().size(), size == 32767 ? 32767 : 0);
    }
    ProbeEvent tooLong([](ProbeEvent& e) { e.addField(std::string(65538, 'x')); });
    EXPECT_EQ(wireOf(tooLong).substr(12), bytesOf("0002") + std::string(65538, 'x'));
}

struct Growth {
    int size;
    int step;
    const char* lines;
};

TEST(EventFieldsTest, BufferDoublesWithOneLineForEachGrowth) {
    const Growth all[] = {
        {1024, 1012, ""},
        {1025, 1013, "Varnex::Event: Resize buffer to 2048\n"},
        {1500, 1, "Varnex::Event: Resize buffer to 2048\n"},
        {5000, 4988, "Varnex::Event: Resize buffer to 8192\n"},
        {5000, 4,
         "Varnex::Event: Resize buffer to 2048\nVarnex::Event: Resize buffer to 4096\n"
         "Varnex::Event: Resize buffer to 8192\n"},
    };
    for (const auto& [size, step, lines] : all) {
        std::string content;
        for (int i = 12; i < size; ++i) content += static_cast<char>(i % 251);
        ProbeEvent event([&content, width = step](ProbeEvent& e) {
            for (std::size_t i = 0; i < content.size(); i += static_cast<std::size_t>(width))
                e.addData(content.data() + i, width);
        });
        const CapturedDiagnostics printed;
        EXPECT_EQ(wireOf(event).substr(12), content);
        EXPECT_EQ(printed.errors(), lines) << size << " by " << step;
    }
}

}  // namespace
