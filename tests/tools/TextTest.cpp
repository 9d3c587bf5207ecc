#include <tools/varnex/Endpoint.h>
#include <tools/varnex/Failure.h>
#include <tools/varnex/FieldText.h>
#include <tools/varnex/Quote.h>

#include <gtest/gtest.h>

#include <functional>

using namespace VarnexTool;

static std::string orRefused(const std::function<std::string()>& read) {
    try {
        return read();
    } catch (const UsageError&) {
        return "refused";
    }
}

TEST(QuoteTest, ShowsWhatCouldHarmATerminal) {
    const std::pair<std::string, std::string> cases[] = {
        {"a\"b\\c", R"("a\"b\\c")"},
        {std::string("\0\x1B[0m\n\r\t\x7F", 9), R"("\x00\x1b[0m\n\r\t\x7f")"},
        {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\""},
        {"\xC2\x9B_\xE2\x80\xAE_", R"("\u{9b}_\u{202e}_")"},
        {"\xC3", R"("\xc3")"},                                                  // cut off
        {"\xC0\xAF\xE0\x80\xAF", R"("\xc0\xaf\xe0\x80\xaf")"},                  // overlong
        {"\xED\xA0\x80\xF4\x90\x80\x80", R"("\xed\xa0\x80\xf4\x90\x80\x80")"},  // surrogate, beyond Unicode
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(inQuotes(text), expected);
}

TEST(EndpointTest, ReadsHostsAndPorts) {
    const auto listen = [](std::string text) { return orRefused([&] { return Endpoint::toListen(text).text(); }); };
    const auto connect = [](std::string text) { return orRefused([&] { return Endpoint::toConnect(text).text(); }); };
    for (const char* text : {"localhost:65535", "[::1]:80", "a.b:0", ":4711"}) EXPECT_EQ(listen(text), text);
    for (const char* text : {"localhost:65535", "[::1]:80"}) EXPECT_EQ(connect(text), text);
    for (const char* text : {"4711", "a.b:0"}) EXPECT_EQ(connect(text), "refused") << text;
    EXPECT_EQ(listen("4711"), ":4711");
    for (const char* text : {"::1:80", "[]:80", "[::1]", "h:65536", "h:-1", "h: 1", "", "h\n:1", "99999999999999999"})
        EXPECT_EQ(listen(text) + " " + connect(text), "refused refused") << text;
    EXPECT_EQ(connect(std::string(254, 'h') + ":1"), "refused");
}

TEST(FieldTextTest, ReadsExactlyTheValuesThatAFieldCanHold) {
    const std::tuple<Kind, const char*, const char*, std::vector<const char*>> cases[] = {
        {Kind::Flag, "", "true", {"2"}},
        {Kind::Int16, "-32768", "-32768", {"32768"}},
        {Kind::UInt16, "0xFFFF", "65535", {"-1"}},
        {Kind::Int32, "2147483647", "2147483647", {"2147483648", "", "0x-1"}},
        {Kind::Bits32, "0xffffffff", "4294967295", {}},
        {Kind::UInt64, "0", "0", {"18446744073709551616"}},
        {Kind::Floats, "-0.5,1e3", "-0.5,1000", {"1,2,3", "1,1e39"}},
        {Kind::Points, "1,2,3,4,5,-6", "[(1,2,3,4,5,-6)]", {"1,2,3,4,5,6.5"}},
    };
    const auto read = [](Kind kind, const std::string& text) {
        return orRefused([&] { return formatValue(parseField({"name", kind, 2, nullptr, nullptr}, {text})); });
    };
    for (const auto& [kind, text, printed, bad] : cases) {
        EXPECT_EQ(read(kind, text), printed) << text;
        for (const char* refused : bad) EXPECT_EQ(read(kind, refused), "refused") << refused;
    }
    EXPECT_EQ(read(Kind::Text, std::string(32767, 'x')).size(), 32769U);
    EXPECT_EQ(read(Kind::Text, std::string(32768, 'x')), "refused");
    EXPECT_EQ((Field{"hostName", Kind::Text, 1, nullptr, nullptr}.optionName()), "--host-name");
}
