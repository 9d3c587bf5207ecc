#include <Varnex/protocols/ProtocolHTTP.h>

#include <gtest/gtest.h>

#include <climits>
#include <ctime>

using namespace Varnex;
using Http = ProtocolHTTP;

namespace {

TEST(HttpDateTest, WritesAndReads) {
    const std::pair<long, const char*> cases[] = {{784111777, "Sun, 06 Nov 1994 08:49:37 GMT"},
                                                  {0, "Thu, 01 Jan 1970 00:00:00 GMT"},
                                                  {951782400, "Tue, 29 Feb 2000 00:00:00 GMT"},
                                                  {-62167219200, "Sat, 01 Jan 0000 00:00:00 GMT"},
                                                  {253402300799, "Fri, 31 Dec 9999 23:59:59 GMT"},
                                                  {-62167219201, ""},
                                                  {253402300800, ""},
                                                  {LONG_MAX, ""},
                                                  {LONG_MIN, ""}};
    for (const auto& [time, text] : cases) {
        EXPECT_EQ(Http::createTimestamp(time), text);
        EXPECT_EQ(Http::parseTimestamp(text), *text == '\0' ? -1 : time) << text;
    }
}

TEST(HttpDateTest, ReadsAllForms) {
    constexpr long kTime = 784111777, kMidnight = 784080000;
    const std::pair<std::string, long> cases[] = {{"Sunday, 06-Nov-94 08:49:37 GMT", kTime},
                                                  {"Sun Nov  6 08:49:37 1994", kTime},
                                                  {" sUN,06 nOV 1994  08:49:37,gmt,", kTime},
                                                  {"Sun, 06-Nov-1994 08:49:37 GMT", kTime},
                                                  {"Mon, 6 Nov 1994 00:00:00 GMT", kMidnight},
                                                  {"Sat Dec 31 23:59:60 1994", 788918400},
                                                  {"Thu, 29 Feb 1900 00:00:00 GMT", -1},
                                                  {"Tue, 29-Feb-00 00:00:00 GMT", 951782400},
                                                  {"Thu, 31 Apr 2020 00:00:00 GMT", -1},
                                                  {"Thu, 00 Apr 2020 00:00:00 GMT", -1},
                                                  {"Thu, -1 Apr 2020 00:00:00 GMT", -1},
                                                  {"Thu, 001 Apr 2020 00:00:00 GMT", -1},
                                                  {"Sun, 06 Nov 1994 24:00:00 GMT", -1},
                                                  {"Sun, 06 Nov 1994 08:60:00 GMT", -1},
                                                  {"Sun, 06 Nov 1994 08:49:61 GMT", -1},
                                                  {"Sun, 06 Nov 1994 8:49:37 GMT", -1},
                                                  {"Sun, 06 Nov 1994 08:49:037 GMT", -1},
                                                  {"Sun, 06 Nov 1994 08:49:3x GMT", -1},
                                                  {"Sun, 06 Nov 1994 08:49:37 CET", -1},
                                                  {"Sun, 06 Nov 1994 08:49:37", -1},
                                                  {"Sun, 06 Nov 1994 08:49:37 GMT x", -1},
                                                  {"Sun, 06 Nov 94 08:49:37 GMT", -1},
                                                  {"Sun, 06-Nov 08:49:37 GMT", -1},
                                                  {"Sun, 06 November 1994 08:49:37 GMT", -1},
                                                  {"Son, 06 Nov 1994 08:49:37 GMT", -1},
                                                  {"Sun Nov  6 08:49:37 94", -1},
                                                  {"", -1},
                                                  {std::string(100000, ','), -1}};
    for (const auto& [text, time] : cases) EXPECT_EQ(Http::parseTimestamp(text), time) << text.substr(0, 50);
}

TEST(HttpDateTest, TwoDigitsAreAYearInTheLastHundred) {
    const std::string now = Http::createTimestamp(std::time(nullptr));
    for (const int ahead : {-49, -1, 1, 49, 51, 99}) {
        const int year = std::stoi(now.substr(12, 4)) + ahead, expected = ahead < 50 ? year : year - 100;
        const std::string digits = std::to_string(year).substr(2);
        EXPECT_EQ(
            Http::createTimestamp(Http::parseTimestamp("Monday, 10-Jun-" + digits + " 00:00:00 GMT")).substr(5, 11),
            "10 Jun " + std::to_string(expected));
    }
}

TEST(HttpDateTest, NumbersBetweenSeparators) {
    using Numbers = std::vector<unsigned long>;
    const std::pair<std::string, Numbers> cases[] = {{"08:49:37", {8, 49, 37}},
                                                     {"7", {7}},
                                                     {"18446744073709551615:0", {ULONG_MAX, 0}},
                                                     {"18446744073709551616", {}},
                                                     {"", {}},
                                                     {"1::2", {}},
                                                     {"1:", {}},
                                                     {":1", {}},
                                                     {"1: 2", {}},
                                                     {"1:-2", {}},
                                                     {"1:2x", {}},
                                                     {"1:+2", {}}};
    for (const auto& [text, numbers] : cases) EXPECT_EQ(Http::parseNumber(text, ':'), numbers) << text;
}

std::string listed(const Plexa::ParamBag& bag) {
    std::string text;
    for (const auto& [name, value] : bag.params()) text += name + "=" + value + "|";
    return text;
}

TEST(TokenTest, ReadsAndWritesOne) {
    struct Case {
        std::string text, token, params, written;  // no token: malformed
    };
    const Case cases[] = {
        {R"(text/html; charset="a\"b")", "text/html", "charset=a\"b|", R"(text/html; charset="a\"b")"},
        {"\t gzip \t", "gzip", "", "gzip"},
        {"a;B=c ;\td=E;b=f", "a", "b=f|d=E|", "a; b=f; d=E"},
        {"a;; ;b=c;", "a", "b=c|", "a; b=c"},
        {R"(a;b="")", "a", "b=|", R"(a; b="")"},
        {R"(a;b="c";d="e f";g=h/i)", "a", "b=c|d=e f|g=h/i|", R"(a; b=c; d="e f"; g="h/i")"},
        {R"(a;b="\c\\;,=")", "a", "b=c\\;,=|", R"(a; b="c\\;,=")"},
        {"a;b=\"\t\xff\"", "a", "b=\t\xff|", "a; b=\"\t\xff\""},
        {"", "", "", ""},
        {";b=c", "", "", ""},
        {"a b", "", "", ""},
        {"a, b", "", "", ""},
        {"a;b", "", "", ""},
        {"a;b=", "", "", ""},
        {"a;=c", "", "", ""},
        {"a;b =c", "", "", ""},
        {"a;b= c", "", "", ""},
        {"a;b/x=c", "", "", ""},
        {"a;b=c d", "", "", ""},
        {"a;b=c,", "", "", ""},
        {R"(a;b="c)", "", "", ""},
        {R"(a;b="c\)", "", "", ""},
        {R"(a;b="c"d)", "", "", ""},
        {"a;b=\"c\nd\"", "", "", ""},
        {"a;b=\"\\\x7f\"", "", "", ""},
        {"a\xff", "", "", ""},
        {"\"a\"", "", "", ""},
    };
    for (const Case& c : cases) {
        std::string token = "old";
        Plexa::ParamBag params;
        params.setParam("old", "x");
        EXPECT_EQ(Http::parseTokenAndParameters(c.text, token, params), !c.token.empty()) << c.text;
        EXPECT_EQ(token, c.token) << c.text;
        EXPECT_EQ(listed(params), c.params) << c.text;
        EXPECT_EQ(Http::createTokenAndParameters(token, params), c.written);
    }
    for (const auto& [name, value] : {std::pair<std::string, std::string>{"", "v"},
                                      {"a b", "v"},
                                      {"a/b", "v"},
                                      {"a", "v\r\nX: y"},
                                      {"a", {"\0", 1}}}) {
        Plexa::ParamBag params;
        params.setParam(name, value);
        EXPECT_EQ(Http::createTokenAndParameters("a", params), "") << name << value;
    }
    EXPECT_EQ(Http::createTokenAndParameters("a b", {}), "");
}

/// The elements of a list, and what stops it.
std::string walked(const std::string& s, bool skips) {
    std::string text, token, name, value;
    unsigned long pos = 0;
    while (Http::parseNextToken(s, pos, token)) {
        text += "[" + token;
        if (skips && !Http::skipParameters(s, pos)) break;
        while (Http::parseNextParameter(s, pos, name, value)) text.append(";").append(name).append("=").append(value);
        text += "]";
    }
    return text + s.substr(pos);
}

TEST(TokenTest, WalksLists) {
    struct Case {
        std::string text, walked, skipped;
    };
    const Case cases[] = {{"gzip;q=0.5, br", "[gzip;q=0.5][br]", "[gzip][br]"},
                          {",, a ,,b;C=\"x,y\" ; , c,", "[a][b;c=x,y][c]", "[a][b][c]"},
                          {"", "", ""},
                          {" , ", "", ""},
                          {"a b", "a b", "a b"},
                          {"a, b;c=, d", "[a][b];c=, d", "[a][b;c=, d"},
                          {"a;b=c d, e", "[a];b=c d, e", "[a;b=c d, e"},
                          {"a;b=\"c, d", "[a];b=\"c, d", "[a;b=\"c, d"},
                          {"a, (b)", "[a](b)", "[a](b)"}};
    for (const Case& c : cases) {
        EXPECT_EQ(walked(c.text, false), c.walked) << c.text;
        EXPECT_EQ(walked(c.text, true), c.skipped) << c.text;
    }
}

}  // namespace
