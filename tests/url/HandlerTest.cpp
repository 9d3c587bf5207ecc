#include <Varnex/url/URL.h>
#include <Varnex/url/URLFile.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLPolicy.h>
#include <Varnex/url/URLProtocol.h>
#include <Varnex/url/URLShaderCG.h>
#include <Varnex/url/URLStream.h>
#include <tests/support/ScriptedScheme.h>
#include <tests/support/ThrowsText.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <vector>

using namespace Varnex;
using testing::Test;

namespace {

class HandlerTest : public Test {
protected:
    HandlerTest() {
        script = {};
        EXPECT_EQ(QX_URLStreamHandlerFactory_registerHandler("X", &handler), &handler);
    }
    ~HandlerTest() override { QX_URLStreamHandlerFactory_unregisterHandler("x", &handler); }

    static URL make(const std::string& text, const URL& base = {}) { return URL::resolve(base, text); }
    static std::string printed(const URL& url) { return url ? url->toString() : "null"; }

    QX_URLStreamHandler handler{};
};

TEST_F(HandlerTest, TheLibraryParsesAndPrintsForIt) {
    handler.getDefaultPort = [] { return 7; };
    const std::string cases[][3] = {{"", "X://u:p@h/a/b", "x://u:p@h/a/b"},
                                    {"", "x://h:7/a?q#f", "x://h/a?q##f"},
                                    {"", "x://h:8", "x://h:8"},
                                    {"", "x://h:0", "x://h:0"},
                                    {"", "x://h/../a b\\c", "x://h/../a b\\c"},
                                    {"", "x:foo", "x://foo"},
                                    {"", "x:foo:bar", "x://bar"},
                                    {"", "x:", "x://"},
                                    {"x://u@h:8/a/b?q#f", "../c", "x://u@h:8/c"},
                                    {"x://u@h:8/a/b?q#f", "?r", "x://u@h:8/a/?r"},
                                    {"x://u@h:8/a/b", "//k/c", "x://k/c"},
                                    {"x://h", "#f", "x://h#f"}};
    for (const auto& [base, text, result] : cases) {
        const URL from = base.empty() ? URL() : make(base);
        EXPECT_EQ(printed(make(text, from)), result) << text << " against " << base;
    }
    const URL url = make("x://h:8/a/b\\c d");
    EXPECT_EQ(url->getScheme(), "x");
    EXPECT_EQ(url->getName(), "c d");
    EXPECT_EQ(url->toRelativeString(*url), "x://h:8/a/b\\c d");
    EXPECT_EQ(url->getHost() + url->getPath(), "");
    EXPECT_FALSE(URL(url->getBase()) || url->refersToSameFileAs(*url));
    handler.toString = [](QX_URL* parts) {  // only the user is never absent
        const bool isEmpty = !parts->host && !parts->path && !parts->query && !parts->fragment;
        return ::strdup((parts->userInfo + std::to_string(parts->port) + (isEmpty ? " empty" : "")).c_str());
    };
    EXPECT_EQ(printed(make("x://u@#")), "u7 empty");
    EXPECT_EQ(printed(make("x://?")), "7 empty");
    handler.toString = nullptr;
    handler.getDefaultPort = nullptr;
    EXPECT_EQ(printed(make("x://h:0/")), "x://h:0/");
    EXPECT_EQ(printed(make("x://h/")), "x://h/");
    EXPECT_EQ(make("x:")->getName(), "");
}

TEST_F(HandlerTest, ItParsesAndPrintsItself) {
    handler.parseURL = [](QX_URL* url, const char* text, int start, int length) {
        if (start != 0 || length != static_cast<int>(std::strlen(text))) return 1;
        url->path = ::strdup(text);
        url->port = length;
        url->scheme = ::strdup("y");  // both undone
        url->handler = nullptr;
        return *text == '!' ? -1 : 0;
    };
    handler.toString = [](QX_URL* url) { return ::strdup((std::string(url->scheme) + "<" + url->path).c_str()); };
    const URL url = make("x:abc");
    EXPECT_EQ(printed(url), "x<abc");
    EXPECT_EQ(printed(make("de", url)), "x<de");
    EXPECT_FALSE(make("x:!"));
    EXPECT_FALSE(make("!", url));
    handler.toString = [](QX_URL*) -> char* { return nullptr; };
    EXPECT_EQ(printed(url), "x://:3abc");
    handler.parseURL = [](QX_URL* copy, const char*, int, int) {
        copy->query = copy->path;  // still the base's
        return 0;
    };
    EXPECT_EQ(printed(make("y", url)), "x://:3abc?abc");
}

TEST_F(HandlerTest, OpensAndStreams) {
    handler.open = &openScript;
    const URL url = make("x://h/p.html");
    script.content = std::string(10000, 'a');
    {
        const std::unique_ptr<URLImpl::Stream> stream(url->open());
        EXPECT_EQ(script.log, "open /p.html start length");
        EXPECT_EQ(stream->getMimeType(), "text/html");
        EXPECT_EQ(stream->getContentLength(), -1);
        std::string block(9000, '\0');
        EXPECT_EQ(stream->get(), 'a');
        EXPECT_TRUE(stream->read(block.data(), 9000));
        EXPECT_EQ(script.asked, (std::vector<int>{4096, 4905}));
        EXPECT_EQ(stream->rdbuf()->sungetc(), EOF);  // what came before is not at hand
        stream->read(block.data(), 9000);
        EXPECT_EQ(stream->gcount(), 999);
        EXPECT_EQ(script.asked, (std::vector<int>{4096, 4905, 9000, 8001}));
    }
    EXPECT_EQ(script.log, "open /p.html start length close");
}

TEST_F(HandlerTest, WholeResources) {
    handler.open = &openScript;
    const auto read = [](std::size_t size, int length) {
        script = {length, std::string(size, 'a')};
        return make("x:")->read2mem();
    };
    const URLImpl::Memory empty = read(5, 0);
    EXPECT_EQ(empty.getSize(), 0);
    EXPECT_EQ(empty.getData(), nullptr);
    EXPECT_FALSE(empty.ownsData());
    const URLImpl::Memory known = read(20, 10);
    EXPECT_EQ(known.getSize(), 10);
    EXPECT_TRUE(known.ownsData());
    EXPECT_THROWS_TEXT(read(9, 10), URLImpl::Exception, "");
    EXPECT_EQ(script.log, "open  start length close");
    for (const int size : {0, 1, 8191, 8192, 8193, 16384, 100000}) {
        const URLImpl::Memory memory = read(static_cast<std::size_t>(size), -1);
        ASSERT_EQ(memory.getSize(), size);
        EXPECT_EQ(std::string(memory.getData(), static_cast<std::size_t>(size)),
                  std::string(static_cast<std::size_t>(size), 'a'));
    }
    read(8192, -1);
    EXPECT_EQ(script.asked, (std::vector<int>{8192, 8192}));
}

TEST_F(HandlerTest, AnUnknownLengthIsLimitedByThePolicy) {
    handler.open = &openScript;
    auto policy = std::make_shared<URLPolicy>();
    policy->setMaxSize(5000);
    URLPolicy::setCurrent(policy);
    for (const std::size_t size : {5000U, 5001U}) {
        script.content = std::string(size, 'a');
        const std::unique_ptr<URLImpl::Stream> stream(make("x:")->open());
        std::string read(6000, '\0');
        EXPECT_EQ(stream->get(), 'a');
        stream->read(read.data(), 6000);
        EXPECT_EQ(stream->bad(), size > 5000);
        EXPECT_EQ(stream->gcount(), 4999);
    }
    script.content = std::string(5001, 'a');
    EXPECT_THROWS_TEXT(make("x:")->read2mem(), URLImpl::Exception, "Open error - larger than the URL policy allows");
    for (const char* const scheme : {"x", "y"}) {
        policy = std::make_shared<URLPolicy>();
        policy->setAllowedSchemes({scheme});
        policy->setPublicHostsOnly(*scheme == 'x');
        URLPolicy::setCurrent(policy);
        EXPECT_THROWS_TEXT(make("x://[::1]")->open(), URLImpl::Exception, "Open error - not allowed by the URL policy");
    }
    URLPolicy::setCurrent(nullptr);
}

TEST_F(HandlerTest, NullsAndLiesDoNoHarm) {
    EXPECT_THROWS_TEXT(make("x:")->open(), URLImpl::Exception, "");
    handler.open = [](QX_URL*) -> QX_URLStream* { return nullptr; };
    EXPECT_THROWS_TEXT(make("x:")->open(), URLImpl::Exception, "");
    handler.open = [](QX_URL*) { return newStream(); };
    EXPECT_EQ(make("x://h/a.css")->read2mem().getMimeType(), "text/css");
    EXPECT_EQ(make("x:")->read2mem().getSize(), 0);
    handler.open = [](QX_URL*) {
        QX_URLStream* const stream = newStream();
        stream->getMimeType = [](QX_URLStream*) -> char* { return nullptr; };
        return stream;
    };
    EXPECT_EQ(make("x://h/a.css")->read2mem().getMimeType(), "");

    handler.open = &openScript;
    script.lie = -5;
    EXPECT_EQ(make("x:")->read2mem().getSize(), 0);
    script = {.length = 100000, .lie = 1 << 30};
    EXPECT_EQ(make("x:")->read2mem().getSize(), 100000);
    script.length = INT_MIN;
    std::unique_ptr<URLImpl::Stream> stream(make("x:")->open());
    EXPECT_EQ(stream->getContentLength(), -1);
    EXPECT_EQ(stream->get(), 0);

    for (const char* const scheme : {"x", static_cast<const char*>(nullptr)})
        EXPECT_EQ(QX_URLStreamHandlerFactory_registerHandler(scheme, nullptr), nullptr);
    EXPECT_EQ(QX_URLStreamHandlerFactory_registerHandler(nullptr, &handler), &handler);
    QX_URLStreamHandlerFactory_unregisterHandler(nullptr, &handler);
    QX_URLStreamHandlerFactory_unregisterHandler("none", &handler);
    QX_URLStreamHandlerFactory_unregisterHandler("file", nullptr);
    EXPECT_TRUE(make("file:///a"));
}

TEST_F(HandlerTest, RegisteringReplacesAndUnregisteringRestoresNothing) {
    QX_URLStreamHandler other{};
    QX_URLStreamHandlerFactory_unregisterHandler("x", &other);
    EXPECT_TRUE(make("x:"));
    QX_URLStreamHandlerFactory_registerHandler("x", &other);
    QX_URLStreamHandlerFactory_unregisterHandler("x", &handler);
    const URL left = make("x://h/a");
    QX_URLStreamHandlerFactory_unregisterHandler("x", &other);
    EXPECT_FALSE(make("x:"));
    EXPECT_EQ(printed(left), "x://h/a");

    using Protocol = URLImpl::Protocol;
    const auto schemes = Protocol::getSchemes();
    EXPECT_EQ(schemes, (std::vector<std::string>{"cg", "data", "ecmascript", "file", "ftp", "glsl", "hlsl", "http",
                                                 "https", "jar", "javascript", "urn", "vrmlscript", "zip"}));
    QX_URLStreamHandlerFactory_registerHandler("CG", &handler);
    EXPECT_EQ(printed(make("cg:a")), "cg://a");
    QX_URLStreamHandlerFactory_unregisterHandler("Cg", &handler);
    EXPECT_FALSE(make("cg:a"));
    static const Protocol restored("cg", &URLShaderCG::createAbsolute);  // for the tests after this one
    const Protocol own("own", [](const std::string& scheme, const std::string& rest) -> URLImpl* {
        return new URLFile(scheme, rest, "");
    });
    EXPECT_EQ(printed(make("OWN:/a")), "file://own/a");
    { const Protocol later("own", nullptr); }
    EXPECT_EQ(Protocol::find("own"), nullptr);
}

}  // namespace
