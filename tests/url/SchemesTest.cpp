#include <Varnex/url/URL.h>
#include <Varnex/url/URLFTP.h>
#include <Varnex/url/URLFile.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLProtocol.h>
#include <Varnex/url/URLStream.h>
#include <Varnex/url/URLURN.h>
#include <tests/support/ThrowsText.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include <unistd.h>

using namespace Varnex;

namespace {

URL make(const std::string& text, const URL& base = {}) {
    return URL::resolve(base, text);
}

/// What comes of it: the URL as a text, "null", or the message of the exception after "! ".
template <class Result>
std::string outcome(Result make) try {
    const URL url(make());
    return url ? url->toString() : "null";
} catch (const URLImpl::Exception& error) {
    return std::string("! ") + error.what();
}

TEST(SchemesTest, AbsoluteUrlsPrint) {
    const std::pair<std::string, std::string> cases[] = {
        {"  file:///p/q.txt \r\n", "file:///p/q.txt"},
        {" \t\r\n", "null"},
        {"\vcg:x", "null"},
        {"c:/x", "null"},
        {"FILE:///a", "file:///a"},
        {"file://LOCALHOST/a", "file:///a"},
        {"file://%4cocalhost/a", "file:///a"},
        {"file://Server/a", "file://Server/a"},
        {"file:///C:\\dir\\x y.txt#f", "file:///C:/dir/x%20y.txt#f"},
        {"file://", "file:///"},
        {"file:///a/../b", "file:///a/../b"},
        {"file:/x", "! Parse error - missing authority"},
        {"file:x", "! Parse error - missing authority"},
        {"file:///a?", "! Parse error - query not allowed"},
        {"ftp://h/pub/f.txt;type=i", "ftp://h/pub/f.txt;type=i"},
        {"ftp://h/x;type=d#f", "ftp://h/x;type=d#f"},
        {"ftp://u:p@h:2121/x", "ftp://u:p@h:2121/x"},
        {"ftp://:p@h:21/a\\b", "ftp://:p@h/a/b"},
        {"ftp://h:-2/x", "ftp://h/x"},
        {"ftp://", "null"},
        {"ftp:///x?y", "null"},
        {"ftp://h:zz/x", "null"},
        {"ftp://:zz/x", "null"},
        {"ftp:///x", "! Parse error - host is missing"},
        {"ftp:x", "! Parse error - missing authority"},
        {"http://h", "http://h/"},
        {"https://h", "https://h/"},
        {"https://h:443/x", "https://h/x"},
        {"http://h:443/x", "http://h:443/x"},
        {"http://h:-1/", "http://h/"},
        {"http://h:/", "http://h:0/"},
        {"http://u@H/a b?q#f", "http://u@H/a%20b?q##f"},
        {"http://:80/", "! Parse error - host is missing"},
        {"http://h:x/", "! Parse error - invalid port"},
        {"http:h", "! Parse error - missing authority"},
        {"data:text/plain;charset=utf-8,a%20b", "data:text/plain;charset=utf-8,a%20b"},
        {"data:,\xff,/", "data:text/plain,%ff,%2f"},
        {"data:;base64,QUJD", "data:text/plain;base64,QUJD"},
        {"data:;base64,Q U-JD==QUJD", "data:text/plain;base64,QUJD"},
        {"data:a/b;base64,%4", "data:a/b;base64,"},  // less than a byte
        {"data:image/png;BASE64,QUJD", "data:image/png;BASE64,QUJD"},
        {"data:base64,QUJD", "data:base64,QUJD"},
        {"data:abc", "! Invalid data URL"},
        {"javascript:a%20b", "javascript:a%20b"},
        {"vrmlscript:print(1)", "javascript:print(1)"},
        {"ecmascript:x", "ecmascript:x"},
        {"glsl:void main() { }", "glsl:void main() { }"},
        {"hlsl:x", "hlsl:x"},
        {"cg:", "cg:"},
        {"URN:ISBN:0-395", "urn:ISBN:0-395"},
        {"zip:file:///a.zip!/b/c d#f", "zip:file:///a.zip!/b/c%20d#f"},
        {"jar:zip:file:///a.zip!/b.zip!/c", "jar:zip:file:///a.zip!/b.zip!/c"},
        {"zip:file:///a.zip", "! Parse error - missing URL of Zip file"},
        {"zip: !/a", "! Parse error - missing URL of Zip file"},
        {"zip:file:///a.zip!/b?c", "! Parse error - query not allowed"},
        {"zip:none:x!/b", "! Cannot parse URL"},
        {"zip:http://h:x/!/b", "! Parse error - invalid port"},
    };
    for (const auto& c : cases) EXPECT_EQ(outcome([&] { return make(c.first); }), c.second) << c.first;
}

TEST(SchemesTest, RelativeTextsResolve) {
    const std::string cases[][3] = {
        {"file:///a/b/c.txt", " sub/f.txt\t", "file:///a/b/sub/f.txt"},
        {"file:///a/b/c.txt", "../x\\y z#f", "file:///a/x/y%20z#f"},
        {"file:///a/b/c.txt", "#f", "file:///a/b/c.txt#f"},
        {"file:///a/b/c.txt", "//LocalHost", "file:///"},
        {"file://s/a", "//t/b/../c", "file://t/c"},
        {"file:///a/b", "f.txt?x", "! Parse error - query not allowed"},
        {"http://u:p@h:8/a/b/d?q#f", "../c?r", "http://u:p@h:8/a/c?r"},
        {"http://u:p@h:8/a/b?q#f", "#g", "http://u:p@h:8/a/b#g"},
        {"https://h/a", "//k/z", "https://k/z"},
        {"https://h/a", "//k", "https://k/"},
        {"http://h/a", "//k:x", "! Parse error - invalid port"},
        {"http://h/a", "//:8/", "! Parse error - host is missing"},
        {"ftp://u:p@h:2121/a/b;type=i", "c", "ftp://u:p@h:2121/a/c"},
        {"ftp://h/a/b;type=i", "#f", "ftp://h/a/b;type=i#f"},
        {"ftp://h/a/b", ";type=a", "ftp://h/a/;type=a"},
        {"ftp://u@h/a/b;type=i", "//k", "ftp://k/"},
        {"ftp://h/a", "///x?y", "null"},
        {"ftp://h/a", "//k:zz/", "null"},
        {"ftp://h/a", "///x", "! Parse error - host is missing"},
        {"zip:file:///a.zip!/b/c", "../d e", "zip:file:///a.zip!/d%20e"},
        {"zip:file:///a.zip!/b/c", "x!/y!\\!/z", "zip:file:///a.zip!/b/x%21/y%21/%21/z"},
        {"jar:file:///a.zip!/b/c#f", "#g", "jar:file:///a.zip!/b/c#g"},
        {"jar:file:///a.zip!/b/c", "//k/", "! Parse error - missing URL of Zip file"},
        {"data:,x", "y", "! Parse error - A data URL cannot be a base for a relative URL"},
        {"cg:x", "y", "! Parse error - A direct URL cannot be a base for a relative URL"},
        {"urn:x", "y", "! Parse error - A URN cannot be a base for a relative URL"},
        {"urn:x", "data:,y", "data:text/plain,y"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(outcome([&] { return make(c[1], make(c[0])); }), c[2]) << c[1] << " against " << c[0];
}

TEST(SchemesTest, RelativeForms) {
    const std::string cases[][3] = {
        {"file:///a/b/c.txt#f", "file:///a/d/e.txt", "../b/c.txt#f"},
        {"file://s/a", "file://S/a", "//s/a"},
        {"file:///a", "http://h/a", "file:///a"},
        {"http://h/a", "file:///a", "http://h/a"},
        {"http://h/a/b?q", "http://h/a/c/d", "../b?q"},
        {"http://h/c:d", "http://h/x", "/c:d"},  // not taken for a scheme
        {"http://h/a/", "http://h/a/x", "/a/"},
        {"http://h/a//b", "http://h/a/x", "http://h/a//b"},
        {"http://h/a%20b/d", "http://h/a%20b/c", "d"},
        {"http://h/a", "https://h/a", "http://h/a"},
        {"http://h/a", "http://k/a", "//h/a"},
        {"ftp://h/a/b;type=i#f", "ftp://h/a/c", "b;type=i#f"},
        {"ftp://h/a/b", "ftp://h/a/b;type=i", "b"},
        {"ftp://h/a/", "ftp://h/a/b", "/a/"},
        {"ftp://u:p@h:9/a", "ftp://h/a", "//u:p@h:9/a"},
        {"zip:file:///a!/b/c", "zip:file:///a!/d/e", "../b/c"},
        {"zip:file:///a!/b/c", "zip:file:///b!/d/e", "zip:file:///a!/b/c"},
        {"urn:x", "urn:y", "urn:x"},
    };
    for (const auto& [text, base, result] : cases)
        EXPECT_EQ(make(text)->toRelativeString(*make(base)), result) << text << " against " << base;
}

TEST(SchemesTest, PartsAreDecoded) {
    const URL file = make("file://S%20/a%2f/b%41%00"), http = make("HTTP://h%41:8/a/b%20c?q");
    EXPECT_EQ(file->getHost(), "S ");
    EXPECT_EQ(file->getPath(), "/a//bA%00");
    EXPECT_EQ(file->getName(), "bA%00");
    EXPECT_EQ(URL(file->getBase())->toString(), "file://S%20/a%2f/");
    EXPECT_EQ(file->getPort(), 0);
    EXPECT_EQ(http->getHost(), "hA");
    EXPECT_EQ(http->getPort(), 8);
    EXPECT_EQ(http->getName(), "b c");
    EXPECT_EQ(URL(http->getBase())->toString(), "http://h%41:8/a/");
    const URL urn = make("urn:x");
    EXPECT_EQ(urn->getHost() + urn->getPath(), "");
    EXPECT_FALSE(URL(urn->getBase()) || urn->refersToSameFileAs(*urn) || urn->refersToSameDomainAs(*urn));
    EXPECT_EQ(URLFile("", "x", "").getName(), "x");
    EXPECT_EQ(URL(URLFile("", "x", "f").getBase())->toString(), "file://");
}

TEST(SchemesTest, SameFileAndDomain) {
    const std::tuple<std::string, std::string, bool, bool> cases[] = {
        {"file:///a%41", "file:///aA#f", true, true},
        {"file:///a/../b", "file:///b", false, true},
        {"file://S/a", "file://%73/a", true, true},
        {"file://s/a", "file:///a", false, false},
        {"http://H/a?q", "http://h:80/%61", true, true},
        {"http://h/a", "https://h/a", false, false},
        {"http://h/a", "http://h:81/a", false, false},
        {"ftp://h/a", "http://h:21/a", false, false},
        {"file:///a", "data:,x", false, false},
        {"zip:file:///a!/b", "jar:file:///%61!/b", true, true},
        {"zip:file:///a!/b", "zip:file:///c!/b", false, true}};
    for (const auto& [text, otherText, sameFile, sameDomain] : cases) {
        const URL one = make(text), other = make(otherText);
        EXPECT_EQ(one->refersToSameFileAs(*other), sameFile) << text << " " << otherText;
        EXPECT_EQ(one->refersToSameDomainAs(*other), sameDomain) << text << " " << otherText;
        EXPECT_EQ(other->refersToSameFileAs(*one), sameFile) << text << " " << otherText;
    }
}

TEST(SchemesTest, FtpTypeCodes) {
    const std::tuple<std::string, std::string, char, bool> cases[] = {{"/a;type=a", "/a", 'a', true},
                                                                      {";type=i", "", 'i', true},
                                                                      {"/a;type=d", "/a;type=d", 'x', false},
                                                                      {"/a;type=A", "/a;type=A", 'x', false},
                                                                      {"type=i", "type=i", 0, true},
                                                                      {"/a;type=ab", "/a;type=ab", 0, true},
                                                                      {"", "", 0, true}};
    for (const auto& [text, rest, typeCode, known] : cases) {
        std::string path = text;
        char code = 'x';
        EXPECT_EQ(URLFTP::parseTypeCode(path, code), known) << text;
        EXPECT_EQ(path, rest);
        EXPECT_EQ(code, typeCode) << text;
    }
    EXPECT_EQ(make("ftp://h/b;type=i")->getPath(), "/b");
    EXPECT_EQ(make("c;type=a", make("ftp://h/b"))->getPath(), "/c");
}

TEST(SchemesTest, UrnsAreRecognised) {
    const std::tuple<std::string, std::string, std::string, bool> cases[] = {{"urn:ISBN:0-395", "isbn:", "0-395", true},
                                                                             {"urn:ISBN:0-395", "ISBN:", "", false},
                                                                             {"urn:x%3Ay", "x:", "y", true},
                                                                             {"urn:x%3Ay", "x", "%3Ay", true},
                                                                             {"urn:%41%42c", "ab", "c", true},
                                                                             {"urn:ab", "abc", "", false},
                                                                             {"urn:", "", "", true},
                                                                             {"file:///x", "", "", false}};
    for (const auto& [url, prefix, expected, isUrn] : cases) {
        std::string rest = "old";
        EXPECT_EQ(URLURN::isURN(make(url), prefix, rest), isUrn) << url;
        EXPECT_EQ(rest, expected) << url;
    }
    std::string rest;
    EXPECT_FALSE(URLURN::isURN(URL(), "", rest));
    EXPECT_THROWS_TEXT(make("urn:x")->open(), URLImpl::Exception, "Cannot open URN");
    EXPECT_THROWS_TEXT(make("urn:x")->read2mem(), URLImpl::Exception, "Cannot open URN");
}

TEST(SchemesTest, ContentInTheUrl) {
    const std::string cases[][3] = {{"data:,a%20%00b", "text/plain", "a %00b"},
                                    {"data:x/y;base64,AAH/", "x/y", {"\0\1\xff", 3}},
                                    {"vrmlscript:print(1)", "application/x-javascript", "print(1)"},
                                    {"ecmascript:a", "application/x-ecmascript", "a"},
                                    {"glsl:%20 {", "application/x-shader-glsl", "%20 {"},
                                    {"hlsl:a", "application/x-shader-hlsl", "a"},
                                    {"cg:", "application/x-shader-cg", ""}};
    for (const auto& [text, type, content] : cases) {
        const URL url = make(text);
        const URLImpl::Memory memory = url->read2mem();
        EXPECT_EQ(memory.getMimeType(), type);
        EXPECT_EQ(std::string(memory.getData(), static_cast<std::size_t>(memory.getSize())), content);
        EXPECT_FALSE(memory.ownsData());
        const std::unique_ptr<URLImpl::Stream> stream(url->open());
        EXPECT_EQ(stream->getMimeType(), type);
        EXPECT_EQ(stream->getContentLength(), std::ssize(content));
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(*stream), {}), content);
    }
}

TEST(SchemesTest, TheWorkingDirectoryIsTheLastBase) {
    const std::filesystem::path here = std::filesystem::current_path();
    EXPECT_EQ(URLFile::_cwd.getPath(), here.string() + "/");
    EXPECT_EQ(make("a")->getPath(), (here / "a").string());
    std::filesystem::path deep = std::filesystem::temp_directory_path() / ("varnex" + std::to_string(::getpid()));
    const std::filesystem::path top = deep;
    while (deep.string().size() < 512) deep /= std::string(100, 'x');
    std::filesystem::create_directories(deep);
    std::filesystem::current_path(deep);
    EXPECT_EQ(URLFile().toString(), "file:///");
    std::filesystem::create_directory(top / "a #:");
    std::filesystem::current_path(top / "a #:");
    EXPECT_EQ(URLFile().toString(), "file://" + top.string() + "/a%20%23:/");
    std::filesystem::current_path(here);
    std::filesystem::remove_all(top);
}

TEST(UrlTest, HandlesShareAndTheLastOneDeletes) {
    struct Counted : URLURN {
        explicit Counted(int& deleted) : URLURN("x"), deleted_(deleted) {}
        ~Counted() override { ++deleted_; }
        int& deleted_;
    };
    int deleted = 0;
    {
        URL first(new Counted(deleted)), second = first, third;
        third = second;
        first = std::move(second);
        const URL& same = third;
        third = same;
        first = URL();
        EXPECT_EQ(deleted, 0);
        EXPECT_EQ(third->getName(), "x");
    }
    EXPECT_EQ(deleted, 1);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(URL::share(URLFile::_cwd).get(), &URLFile::_cwd);
    EXPECT_FALSE(URL());
}

TEST(SchemesTest, ArchivesNestOnlySoDeep) {
    std::string text = "file:///a";
    for (int i = 0; i < 8; ++i) text = "zip:" + text + "!/b";
    EXPECT_EQ(outcome([&] { return make(text); }), text);
    EXPECT_EQ(outcome([&] { return make("zip:" + text + "!/b"); }), "! Cannot parse URL");
    std::string many;
    for (int i = 0; i < 1'000'000; ++i) many += "zip:";
    for (int i = 0; i < 1'000'000; ++i) many += "!/b";
    EXPECT_EQ(outcome([&] { return make(many); }), "! Cannot parse URL");
}

}  // namespace
