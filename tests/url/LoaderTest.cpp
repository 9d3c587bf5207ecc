#include <Varnex/url/ConnectionDelegate.h>
#include <Varnex/url/LoadGuard.h>
#include <Varnex/url/LoadOptions.h>
#include <Varnex/url/URL.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/openURL.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/ThrowsText.h>

#include <gtest/gtest.h>

#include <iterator>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdlib.h>

using namespace Varnex;

namespace {

using Answers = std::vector<ScriptedServer::Answer>;
constexpr auto Keep = ScriptedServer::Keep, Close = ScriptedServer::Close, Reset = ScriptedServer::Reset,
               Hold = ScriptedServer::Hold;

/// Limits that a test can wait for.
std::shared_ptr<LoadOptions> impatient() {
    auto options = std::make_shared<LoadOptions>();
    options->connectTime = options->stallTime = std::chrono::milliseconds(300);
    return options;
}

/// Type, length and content; "!" where it does not open, "..." where it breaks off.
std::string loaded(const std::string& url, std::shared_ptr<const LoadOptions> options = impatient()) try {
    const auto stream = openURL(url, "/guess.png", std::move(options));
    const std::string head = stream->getMimeType() + " " + std::to_string(stream->getContentLength()) + " ";
    std::string content(100, ' ');
    stream->read(content.data(), std::ssize(content));
    content.resize(static_cast<std::size_t>(stream->gcount()));
    return head + content + (stream->bad() ? "..." : "");
} catch (const LoadError& error) {
    EXPECT_STREQ(error.what(), "");
    EXPECT_NE(error.getReason(), "");
    return "!";
} catch (const URLImpl::Exception& error) {
    return std::string("! ") + error.what();
}

std::string redirect(const std::string& to) {
    return "HTTP/1.1 302 Found\r\nLocation: " + to + "\r\nContent-Length: 4\r\n\r\nmove";
}

const std::string kHello = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello";

struct AnswerCase {
    const char* name;
    Answers script;
    std::string loaded;
};

class AnswerTest : public testing::TestWithParam<AnswerCase> {};

TEST_P(AnswerTest, IsReadOrRefused) {
    ScriptedServer server(GetParam().script);
    EXPECT_EQ(loaded(server.url()), GetParam().loaded);
}

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

std::string lines(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "X-" + std::to_string(i) + ": y\r\n";
    return text;
}

const std::string kOk = "HTTP/1.1 200 OK\r\n",
                  kLength = kOk + "Content-Length: ", kChunked = kOk + "Transfer-Encoding: chunked\r\n\r\n";

INSTANTIATE_TEST_SUITE_P(
    Loader, AnswerTest,
    testing::ValuesIn(std::vector<AnswerCase>{
        {"OfKnownLength", {{kOk + "Content-Type: a/b ;c=d\r\nContent-Length: 5\r\n\r\nhello"}}, "a/b 5 hello"},
        {"UpToTheEnd", {{kOk + "\r\nhello"}}, "image/png -1 hello"},
        {"Empty", {{kLength + "0\r\n\r\n", Hold}}, "image/png 0 "},
        {"WithoutContent", {{"HTTP/1.1 204 No\r\n\r\n", Hold}}, "image/png 0 "},
        {"InChunks", {{kChunked + "2\r\nhe\r\n3;x=y\r\nllo\r\n0\r\nX: y\r\n\r\n", Hold}}, "image/png -1 hello"},
        {"AfterInterimOnes",
         {{"HTTP/1.1 100 C\r\n\r\nHTTP/1.1 103 E\r\nLink: x\r\n\r\n" + kHello}},
         "image/png 5 hello"},
        {"OfAnError", {{"HTTP/1.0 404 Not Found\r\n\r\nnone"}}, "image/png -1 none"},
        {"Redirected", {{redirect("/b"), Keep}, {redirect("c?d"), Close}, {kHello}}, "image/png 5 hello"},
        {"RedirectedNowhere", {{"HTTP/1.1 302 F\r\n\r\nhere"}}, "image/png -1 here"},
        {"Folded", {{kOk + "Content-Type: a/b;\r\n c=d\r\n\r\nx"}}, "a/b -1 x"},
        {"LongerThanAnInt", {{kLength + "4294967296\r\n\r\nhello"}}, "image/png -1 hello..."},
        {"CutInTheBody", {{kLength + "9\r\n\r\nhello"}}, "image/png 9 hello..."},
        {"ResetInTheBody", {{kLength + "9\r\n\r\nhello", Reset}}, "image/png 9 hello..."},
        {"StalledInTheBody", {{kLength + "9\r\n\r\nhello", Hold}}, "image/png 9 hello..."},
        {"CutInAChunk", {{kChunked + "9\r\nhello"}}, "image/png -1 hello..."},
        {"CutBetweenChunks", {{kChunked + "5\r\nhello\r\n"}}, "image/png -1 hello..."},
        {"OfBadChunks", {{kChunked + "5\r\nhello\r\nzz\r\n"}}, "image/png -1 hello..."},
        {"OfHugeChunks", {{kChunked + "5\r\nhello\r\nfffffffffffffffff\r\nx"}}, "image/png -1 hello..."},
        {"Nothing", {{"", Close}}, "!"},
        {"ResetAtOnce", {{"", Reset}}, "!"},
        {"SilentForEver", {{"", Hold}}, "!"},
        {"CutInTheStatusLine", {{"HTTP/1.1 20"}}, "!"},
        {"CutInTheHeader", {{kOk + "Content-Ty"}}, "!"},
        {"CutAfterALine", {{kLength + "5\r\n"}}, "!"},
        {"StalledInTheHeader", {{kOk + "Content-Ty", Hold}}, "!"},
        {"RedirectedToAStall", {{redirect("/"), Keep}, {"", Hold}}, "!"},
        {"RedirectedToACutHead", {{redirect("/")}, {kOk}}, "!"},
        {"WithoutAHead", {{"hello\r\n"}}, "!"},
        {"OfAMalformedLine", {{kOk + "no colon\r\n\r\nx"}}, "!"},
        {"OfNegativeLength", {{kLength + "-5\r\n\r\nhello"}}, "!"},
        {"OfTooManyLines", {{kOk + lines(300) + "\r\n"}}, "!"},
        {"OfManyLines", {{kOk + lines(200) + "\r\nx"}}, "image/png -1 x"},
        {"InterimForEver", {{repeated("HTTP/1.1 100 C\r\nX: y\r\n\r\n", 200) + kHello}}, "!"},
        {"OfEndlessTrailers", {{kChunked + "5\r\nhello\r\n0\r\n" + lines(300), Hold}}, "image/png -1 hello..."},
        {"RedirectedForEver", Answers(30, {redirect("/"), Keep}), "!"},
        {"RedirectedToAFile", {{redirect("file:///etc/hostname")}}, "!"},
        {"RedirectedToFTP", {{redirect("ftp://127.0.0.1/x")}}, "!"},
        {"RedirectedToNonsense", {{redirect("http://[::1/")}}, "!"},
    }),
    [](const auto& instance) { return std::string(instance.param.name); });

TEST(LoaderTest, OpensAndReadsAsUrlsDo) {
    ScriptedServer server({{kHello}, {kLength + "9\r\n\r\nhello"}, {kOk + "\r\n" + std::string(300'000, 'x')}});
    const URL url = URL::resolve({}, server.url("/a%20b?c d\xC3\xA4#f"));
    const URLImpl::Memory memory = url->read2mem();
    EXPECT_EQ(std::string(memory.getData(), 5), "hello");
    EXPECT_TRUE(server.requests()[0].starts_with("GET /a%20b?c%20d%c3%a4 HTTP/1.1\r\n")) << server.requests()[0];
    EXPECT_THROW(static_cast<void>(url->read2mem()), URLImpl::Exception);
    const std::unique_ptr<URLImpl::Stream> stream(url->open());
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(*stream), {}), std::string(300'000, 'x'));  // by single bytes
}

TEST(LoaderTest, HidesPasswordsFromOtherServersAndTakesNothingFromTheEnvironment) {
    ::setenv("http_proxy", "http://127.0.0.1:1", 1);
    ScriptedServer other({{kHello}});
    ScriptedServer server({{redirect("/again"), Keep}, {redirect(other.url())}});
    auto options = impatient();
    EXPECT_TRUE(options->header.setChecked("X-Key", "k"));
    EXPECT_EQ(loaded(server.url("/", "us%65r:p@"), options), "image/png 5 hello");
    ::unsetenv("http_proxy");
    const std::string line = "Authorization: Basic dXNlcjpw\r\n";
    for (const std::string& request : server.requests()) EXPECT_NE(request.find(line), std::string::npos) << request;
    EXPECT_EQ(other.requests().at(0).find("Authorization"), std::string::npos);
    EXPECT_NE(other.requests().at(0).find("X-Key: k\r\n"), std::string::npos);
}

TEST(LoaderTest, TellsTheAnswerAndLoadsWhatIsAskedFor) {
    ScriptedServer server({{redirect("/b")},
                           {"HTTP/1.1 206 Part\r\nContent-Range: bytes 3-4/5\r\nContent-Length: 2\r\nX: y\r\n\r\nlo"},
                           {redirect("/b")}});
    auto options = impatient();
    options->offset = 3;
    const auto stream = openURL(server.url(), "/", options);
    EXPECT_EQ(stream->getAnswer().url, server.url("/b"));
    EXPECT_EQ(stream->getAnswer().reply.code, 206U);
    EXPECT_EQ(stream->getAnswer().reply.header.getParam("x"), "y");
    EXPECT_EQ(stream->getAnswer().offset, 3);
    EXPECT_EQ(stream->getAnswer().length, 2);
    EXPECT_NE(server.requests().at(1).find("Range: bytes=3-\r\n"), std::string::npos);
    options->followRedirects = false;
    EXPECT_EQ(loaded(server.url(), options), "image/png 4 move");
    options->header.setParam("X", "a\r\nY: b");
    EXPECT_EQ(loaded(server.url(), options), "! Open error - invalid header");
}

TEST(LoaderTest, KeepsConnectionsForTheNextLoading) {
    ScriptedServer server({{kHello, Keep}, {kHello, Keep}, {kLength + "9\r\n\r\nhello", Keep}, {kHello}});
    for (const char* path : {"/a", "/b"}) EXPECT_EQ(loaded(server.url(path)), "image/png 5 hello");
    EXPECT_EQ(loaded(server.url("/c")), "image/png 9 hello...");
    EXPECT_EQ(server.connections(), 1);
    EXPECT_EQ(loaded(server.url("/d")), "image/png 5 hello");  // that one was beyond use
    EXPECT_EQ(server.connections(), 2);
}

TEST(LoaderTest, GivesUpInTimeAndWhenCancelled) {
    ScriptedServer server({{"", Hold}});
    EXPECT_EQ(loaded("https" + server.url().substr(4)), "!");  // nobody answers the handshake
    auto options = std::make_shared<LoadOptions>();
    options->isCancelled = [] { return true; };
    EXPECT_EQ(loaded(server.url(), options), "!");
    for (const char* url : {"file:///etc/hostname", "dict://127.0.0.1/", "http://127.0.0.1:1/", "http://[/", "", "x"})
        EXPECT_EQ(loaded(url), "!") << url;
}

class NoSecrets : public URLPolicy {
public:
    void check(const URLImpl& url) const override {
        URLPolicy::check(url);
        if (url.getPath() == "/secret") throw URLImpl::Exception("secret");
    }
};

TEST(LoaderTest, AsksThePolicyAboutRedirectsSizesAndAddresses) {
    auto policy = std::make_shared<NoSecrets>();
    policy->setAllowedSchemes({"http"});
    policy->setMaxSize(4);
    URLPolicy::setCurrent(policy);
    ScriptedServer server({{redirect("/secret"), Keep},
                           {redirect("https://127.0.0.1:1/")},
                           {kHello},
                           {kOk + "\r\nhello"},
                           {kChunked + "9\r\nhe"}});
    EXPECT_EQ(loaded(server.url()), "! secret");  // on the same connection, too
    EXPECT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(loaded(server.url()), "! Open error - not allowed by the URL policy");
    EXPECT_EQ(loaded(server.url()), "! Open error - larger than the URL policy allows");
    EXPECT_EQ(loaded(server.url()), "image/png -1 hell...");
    EXPECT_EQ(loaded(server.url()), "image/png -1 he...");
    policy->setPublicHostsOnly(true);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(loaded(server.url()), "! Open error - not allowed by the URL policy");
    EXPECT_FALSE(LoadGuard(policy, false).allowsAddress("::1"));
    for (const bool hasProxy : {false, true})
        EXPECT_EQ(LoadGuard(policy, hasProxy).allowsAddress(reinterpret_cast<const sockaddr&>(address)), hasProxy);
    URLPolicy::setCurrent(nullptr);
}

TEST(ConnectionDelegateTest, KeepsOneChunkUntilItIsTaken) {
    ConnectionDelegate delegate;
    EXPECT_FALSE(delegate.hasAnswer() || delegate.isReadable());
    delegate.didReceiveResponse(9, "a/b");
    EXPECT_TRUE(delegate.didReceiveData("old"));
    delegate.didReceiveResponse(7, "c/d");  // in its place
    EXPECT_EQ(delegate.getMimeType(), "c/d");
    EXPECT_FALSE(delegate.hasData());
    char memory[4];
    delegate.lend(memory, 4);
    EXPECT_TRUE(delegate.didReceiveData("abc") && delegate.didReceiveData("defg"));
    EXPECT_FALSE(delegate.didReceiveData("h"));
    EXPECT_EQ(std::string(memory, static_cast<std::size_t>(delegate.take())), "abcd");
    delegate.didFailWithError("why");
    delegate.lend(memory, 2);
    EXPECT_EQ(std::string(memory, static_cast<std::size_t>(delegate.take())), "ef");
    delegate.lend(memory, 4);
    EXPECT_EQ(std::string(memory, static_cast<std::size_t>(delegate.take())), "g");
    EXPECT_TRUE(delegate.isReadable() && delegate.hasFailed() && delegate.take() == 0);
}

}  // namespace
