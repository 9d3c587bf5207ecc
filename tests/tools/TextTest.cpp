#include <tools/varnex/Endpoint.h>
#include <tools/varnex/Failure.h>
#include <tools/varnex/FieldText.h>
#include <tools/varnex/Quote.h>

#include <gtest/gtest.h>

namespace {

using namespace VarnexTool;

TEST(QuoteTest, ShowsWhatCouldHarmATerminal) {
    const struct {
        std::string text, quoted;
    } cases[] = {
        {"", R"("")"},
        {"a\"b\\c", R"("a\"b\\c")"},
        {std::string("\0\x1B[0m\n\r\t\x7F", 9), R"("\x00\x1b[0m\n\r\t\x7f")"},
        {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\""},
        {"\xC2\x9B"
         "1m\xE2\x80\xAE"
         "x",
         R"("\u{9b}1m\u{202e}x")"},
        {"\xC3", R"("\xc3")"},                                                  // cut off
        {"\xC0\xAF\xE0\x80\xAF", R"("\xc0\xaf\xe0\x80\xaf")"},                  // overlong
        {"\xED\xA0\x80\xF4\x90\x80\x80", R"("\xed\xa0\x80\xf4\x90\x80\x80")"},  // surrogate, beyond Unicode
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(inQuotes(text), expected);
}

TEST(EndpointTest, ReadsHostsAndPorts) {
    const struct {
        const char *text, *listen, *connect;  // as printed again; null: refused
    } cases[] = {
        {"4711", ":4711", nullptr},
        {"a.b:0", "a.b:0", nullptr},
        {"localhost:65535", "localhost:65535", "localhost:65535"},
        {"[::1]:80", "[::1]:80", "[::1]:80"},
        {"::1:80", nullptr, nullptr},
        {"[]:80", nullptr, nullptr},
        {"[::1]", nullptr, nullptr},
        {"h:65536", nullptr, nullptr},
        {"h:-1", nullptr, nullptr},
        {"h: 1", nullptr, nullptr},
        {"", nullptr, nullptr},
        {"h\n:1", nullptr, nullptr},
        {"99999999999999999999999", nullptr, nullptr},
    };
    const auto read = [](Endpoint (*parse)(std::string_view), const char* text) {
        try {
            return parse(text).text();
        } catch (const UsageError&) {
            return std::string("refused");
        }
    };
    for (const auto& [text, listen, connect] : cases) {
        EXPECT_EQ(read(Endpoint::toListen, text), listen == nullptr ? "refused" : listen) << text;
        EXPECT_EQ(read(Endpoint::toConnect, text), connect == nullptr ? "refused" : connect) << text;
    }
    EXPECT_EQ(read(Endpoint::toConnect, (std::string(254, 'h') + ":1").c_str()), "refused");
}

TEST(FieldTextTest, ReadsExactlyTheValuesThatAFieldCanHold) {
    const struct {
        Kind kind;
        const char *text, *printed;  // null: refused
    } cases[] = {
        {Kind::Flag, "", "true"},
        {Kind::Flag, "2", nullptr},
        {Kind::Int16, "-32768", "-32768"},
        {Kind::UInt16, "0xFFFF", "65535"},
        {Kind::UInt16, "-1", nullptr},
        {Kind::Int32, "2147483648", nullptr},
        {Kind::Int32, "", nullptr},
        {Kind::Int32, "0x-1", nullptr},
        {Kind::Bits32, "0xffffffff", "4294967295"},
        {Kind::UInt64, "18446744073709551616", nullptr},
        {Kind::Floats, "-0.5,1e3", "-0.5,1000"},
        {Kind::Floats, "1,2,3", nullptr},
        {Kind::Floats, "1,1e39", nullptr},
        {Kind::Points, "1,2,3,4,5,-6", "[(1,2,3,4,5,-6)]"},
        {Kind::Points, "1,2,3,4,5,6.5", nullptr},
    };
    for (const auto& [kind, text, printed] : cases) {
        const Field field{"name", kind, 2, nullptr, nullptr};
        if (printed == nullptr)
            EXPECT_THROW(static_cast<void>(parseField(field, {text})), UsageError) << text;
        else
            EXPECT_EQ(formatValue(parseField(field, {text})), printed) << text;
    }
    const Field field{"hostName", Kind::Text, 1, nullptr, nullptr};
    EXPECT_EQ(field.optionName(), "--host-name");
    EXPECT_EQ(std::get<std::string>(parseField(field, {std::string(32767, 'x')})).size(), 32767U);
    EXPECT_THROW(static_cast<void>(parseField(field, {std::string(32768, 'x')})), UsageError);
}

}  // namespace
