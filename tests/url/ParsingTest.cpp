#include <Varnex/url/URL.h>
#include <Varnex/url/URLImpl.h>

#include <gtest/gtest.h>

#include <climits>

using namespace Varnex;

namespace {

using Text = std::string;

std::string repeated(const std::string& text, std::size_t bytes) {
    std::string all;
    while (all.size() < bytes) all += text;
    return all;
}

TEST(UrlParsingTest, TheSteps) {
    struct Case {
        bool (*step)(Text&, Text&);
        Text text, taken, rest;
        bool found;
    };
    const Case cases[] = {
        {&URLImpl::parseScheme, "HTTP://h/", "http", "//h/", true},
        {&URLImpl::parseScheme, "h%54%74P://h/", "http", "//h/", true},
        {&URLImpl::parseScheme, "%253A:x", "%3a", "x", true},
        {&URLImpl::parseScheme, "a:b:c", "a", "b:c", true},
        {&URLImpl::parseScheme, "c:/x", "c", "/x", true},
        {&URLImpl::parseScheme, " \xff:", " \xff", "", true},
        {&URLImpl::parseScheme, ":x", "", ":x", false},
        {&URLImpl::parseScheme, "/a:b", "", "/a:b", false},
        {&URLImpl::parseScheme, "a?b:c", "", "a?b:c", false},
        {&URLImpl::parseScheme, "a#b:c", "", "a#b:c", false},
        {&URLImpl::parseScheme, "abc", "", "abc", false},
        {&URLImpl::parseScheme, "", "", "", false},
        {&URLImpl::parseAuthority, "//", "", "", true},
        {&URLImpl::parseAuthority, "//h", "h", "", true},
        {&URLImpl::parseAuthority, "///x", "", "/x", true},
        {&URLImpl::parseAuthority, "//h?q/", "h", "?q/", true},
        {&URLImpl::parseAuthority, "//h#f", "h", "#f", true},
        {&URLImpl::parseAuthority, "/x", "", "/x", false},
        {&URLImpl::parseAuthority, "/", "", "/", false},
        {&URLImpl::parseAuthority, "x//h", "", "x//h", false},
        {&URLImpl::parsePath, "/a/b?q#f", "/a/b", "?q#f", true},
        {&URLImpl::parsePath, "a#f?q", "a", "#f?q", true},
        {&URLImpl::parsePath, "?q", "", "?q", false},
        {&URLImpl::parsePath, "", "", "", false},
        {&URLImpl::parseQuery, "?a=1#top", "a=1#", "#top", true},
        {&URLImpl::parseQuery, "?#top", "#", "#top", true},
        {&URLImpl::parseQuery, "?a?b", "a?b", "", true},
        {&URLImpl::parseQuery, "?", "", "", true},
        {&URLImpl::parseQuery, "#f", "", "#f", false},
        {&URLImpl::parseQuery, "", "", "", false},
        {&URLImpl::parseFragment, "#a#b", "a#b", "", true},
        {&URLImpl::parseFragment, "#", "", "", true},
        {&URLImpl::parseFragment, "a#b", "", "a#b", false},
    };
    for (const Case& c : cases) {
        Text rest = c.text, taken = "old";
        EXPECT_EQ(c.step(rest, taken), c.found) << c.text;
        EXPECT_EQ(taken, c.taken) << c.text;
        EXPECT_EQ(rest, c.rest) << c.text;
    }
}

TEST(UrlParsingTest, UserAndPassword) {
    const Text cases[][4] = {
        {"u:p@h", "u", "p", "h"}, {"a@b@h", "a", "", "b@h"}, {"u@h", "u", "", "h"},  {"u:p:q@h", "u", "p:q", "h"},
        {":@", "", "", ""},       {":p@h", "", "p", "h"},    {"h:1", "", "", "h:1"}, {"%40:%3a@h", "%40", "%3a", "h"}};
    for (const auto& [text, user, password, host] : cases) {
        Text authority = text, foundUser = "old", foundPassword = "old";
        EXPECT_TRUE(URLImpl::parseUserPassword(authority, foundUser, foundPassword));
        EXPECT_EQ(foundUser, user) << text;
        EXPECT_EQ(foundPassword, password) << text;
        EXPECT_EQ(authority, host) << text;
    }
}

TEST(UrlParsingTest, HostAndPort) {
    struct Case {
        Text text, host;
        int port;
        bool valid = true;
    };
    const Case cases[] = {{"h", "h", -1},
                          {"", "", -1},
                          {"h:", "h", 0},
                          {"h:80", "h", 80},
                          {"h:x", "h", 0, false},
                          {"h:80x", "h", 80, false},
                          {"h:-5", "h", -5},
                          {"h: \t\v+7", "h", 7},
                          {"h:7 ", "h", 7, false},
                          {"h: ", "h", 0, false},
                          {"h:+", "h", 0, false},
                          {"h:+-5", "h", 0, false},
                          {"h:--5", "h", 0, false},
                          {"h:%38%30", "h", 80},
                          {"h:%2d8", "h", -8},
                          {"h:0x10", "h", 0, false},
                          {"h:99999999999", "h", INT_MAX},
                          {"h:-99999999999999999999999", "h", INT_MIN},
                          {"h:99999999999999999999x", "h", INT_MAX, false},
                          {{"h:80\0x", 6}, "h", 80, false},
                          {"[::1]", "[::1]", -1},
                          {"[::1]:8080", "[::1]", 8080},
                          {"a:b]c", "a:b]c", -1},
                          {"a:1:2", "a:1", 2}};
    for (const Case& c : cases) {
        Text text = c.text, host = "old";
        int port = -7;
        EXPECT_EQ(URLImpl::parseHostPort(text, host, port), c.valid) << c.text;
        EXPECT_EQ(host, c.host) << c.text;
        EXPECT_EQ(port, c.port) << c.text;
    }
}

TEST(UrlParsingTest, AWholeUrl) {
    URLImpl::Components parts;
    URLImpl::parseURL("X%3a://u:p@h:1x/a?q#f", parts);
    EXPECT_EQ(parts.flags, 31U);
    EXPECT_EQ(parts.scheme, "x:");
    EXPECT_EQ(parts.user, "u");
    EXPECT_EQ(parts.password, "p");
    EXPECT_EQ(parts.host, "h");
    EXPECT_EQ(parts.port, 1);
    EXPECT_EQ(parts.path, "/a");
    EXPECT_EQ(parts.query, "q#");
    EXPECT_EQ(parts.fragment, "f");
    parts.path = "?#";
    URLImpl::parseURL(parts.path, parts);  // its own part
    EXPECT_EQ(parts.flags, 24U);
    EXPECT_EQ(parts.scheme + parts.user + parts.password + parts.host + parts.path + parts.fragment, "");
    EXPECT_EQ(parts.port, -1);
    EXPECT_EQ(parts.query, "#");
}

TEST(UrlParsingTest, EncodesAndDecodes) {
    const auto encoded = [](Text text, const Text& allowed) {
        URLImpl::encodeUnsafeCharacters(text, allowed);
        return text;
    };
    EXPECT_EQ(encoded("a b/\xc3\xa9", ""), "a%20b%2f%c3%a9");
    EXPECT_EQ(encoded("a b/\xc3\xa9", URLImpl::_specialChars), "a%20b/%c3%a9");
    EXPECT_EQ(encoded("aZ09$-_.!~*'(),%;/?:@&=+#", ""), "aZ09$-_.!~*'(),%25%3b%2f%3f%3a%40%26%3d%2b%23");
    EXPECT_EQ(encoded({"\0\x7f\"<>[]^`{|}\\", 13}, ";/?:@&=+%#"), "%00%7f%22%3c%3e%5b%5d%5e%60%7b%7c%7d%5c");
    EXPECT_EQ(URLImpl::_specialChars, ";/?:@&=+%#");
    struct Case {
        Text text, keep, decoded;
        std::size_t end = Text::npos, stop = Text::npos;
    };
    const Case cases[] = {{"%zz%41%00%4", "", "%zzA%00%4", Text::npos, 7},
                          {"%2541", "", "%41"},
                          {"%%41", "", "%A"},
                          {"%25%32%35", "", "%25"},
                          {"%2f%2F%41", "/", "%2f%2FA"},
                          {"%41%", "", "A%", Text::npos, 1},
                          {"%fF", "", "\xff"},
                          {"ab%41%42%43", "", "abAB%43", 4, 4},  // counts what is decoded already
                          {"%41", "", "%41", 0, 0},
                          {"%41%42", "", "AB", 99}};
    for (const Case& c : cases) {
        Text text = c.text;
        EXPECT_EQ(URLImpl::decodeUnsafeCharacters(text, c.keep, c.end), c.stop) << c.text;
        EXPECT_EQ(text, c.decoded) << c.text;
    }
}

TEST(UrlParsingTest, PathsBecomeAbsolute) {
    const Text cases[][3] = {{"../c", "/a/b/x", "/a/c"},
                             {"./c//d", "/a/", "/a/c/d"},
                             {"/../a/b/c", "/", "/../a/b/"},
                             {"/../x", "", "/../x"},
                             {"/..//x", "", "/..//"},
                             {"", "/a/b", "/a/"},
                             {"", "b", ""},
                             {"x", "b", "x"},
                             {"../x", "b", "../x"},
                             {"../x/y", "b", "../x/"},
                             {"../x", "a/b", "a/../x"},
                             {"/a/b/..", "", "/a/b/.."},
                             {"/a/b/../", "", "/a/"},
                             {"/a/../b", "", "/b"},
                             {"/a/../../b", "", "/../b"},
                             {"/a/../../b/c", "", "/../b/"},
                             {"/a/./b/.", "", "/a/b/."},
                             {"/a///b", "", "/a/b"},
                             {"//abc", "", "/abc"},
                             {"c", "//a/../b/", "//a/../b/c"},  // the base stays as it is
                             {"../../../c", "/a/b/", "/../c"},
                             {"a/...//.b/..c/../d", "/", "/a/.../.b/d"}};
    for (const auto& [path, base, result] : cases) {
        Text text = path;
        EXPECT_TRUE(URLImpl::makePathAbsolute(text, base));
        EXPECT_EQ(text, result) << path << " against " << base;
    }
}

TEST(UrlParsingTest, PathsBecomeRelative) {
    const Text cases[][3] = {{"/a/b", "/a/c", "b"},        {"/a/b", "/a/c/d", "../b"}, {"/x/y", "/a/b", "../x/y"},
                             {"/a/b", "/a/b", "b"},        {"/a/", "/a/x", ""},        {"/a//b", "/a/x", "/b"},
                             {"/c:d", "/x", "c:d"},        {"/a", "/", "a"},           {"/ab/c", "/a/c", "../ab/c"},
                             {"/a/b", "//x/", "../../a/b"}};
    for (const auto& [path, base, result] : cases) {
        Text text = path;
        EXPECT_TRUE(URLImpl::makePathRelative(text, base));
        EXPECT_EQ(text, result) << path << " against " << base;
    }
    for (const auto& [path, base] : {std::pair<Text, Text>{"", "/"}, {"/", ""}, {"a/b", "/"}, {"/a", "b"}}) {
        Text text = path;
        EXPECT_FALSE(URLImpl::makePathRelative(text, base));
        EXPECT_EQ(text, path);
    }
}

TEST(UrlParsingTest, LongTextsTakeLinearTime) {
    for (const char* const piece : {"../", "%", "a/../", "a/", "%25", "./", "//", "@:", "?#"}) {
        Text path = repeated(piece, 3'000'000), decoded = path, encoded = path;
        URLImpl::Components parts;
        URLImpl::parseURL(path, parts);
        URLImpl::makePathAbsolute(path, "/b/" + decoded);
        URLImpl::makePathRelative(path, "/" + encoded);
        URLImpl::decodeUnsafeCharacters(decoded);
        URLImpl::encodeUnsafeCharacters(encoded);
    }  // what takes squares of it ends by the time-out
}

TEST(UrlTest, StrictGrammar) {
    for (const char* const good : {"http://u:p@h:80/a;b/%41?q?/#f?", "", "#", "?", "//", "a/b:c", "./a:b", "urn:x:y",
                                   "http://[::1]:8/", "http://[v1.a:b]/", "x+.-1:", "http://h:/", "//%41@h"})
        EXPECT_TRUE(URL::isWellFormed(good)) << good;
    for (const char* const bad :
         {"a b", "a\\b", "%4", "%zz", "1a:b", ":a", "a:b#c#d", "http://[::1/", "http://h:x/", "http://[::g]/",
          "//a@b@c", "http://[v1.]/", "http://[v.a]/", "http://::1/", "\xc3\xa9", "a/[b", "//[::1]x"})
        EXPECT_FALSE(URL::isWellFormed(bad)) << bad;
    EXPECT_FALSE(URL::isWellFormed(std::string_view("a\0b", 3)));
    EXPECT_FALSE(URL::isWellFormed(std::string_view("//[::1\0]", 8)));
}

}  // namespace
