#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/streams/ioStream.h>
#include <tests/support/Scripted.h>

#include <gtest/gtest.h>

#include <climits>
#include <memory>

using namespace Varnex;
using Http = ProtocolHTTP;

namespace {

TEST(ProtocolHttpTest, StatusPhrases) {
    const std::pair<unsigned long, const char*> cases[] = {{100, "Continue"},
                                                           {404, "Not Found"},
                                                           {416, "Requested range not satisfiable"},
                                                           {505, "HTTP Version not supported"},
                                                           {306, ""},
                                                           {999, ""},
                                                           {0, ""}};
    for (const auto& [code, phrase] : cases) EXPECT_EQ(Http::getStatusPhrase(code), phrase);
}

TEST(ProtocolHttpTest, Numbers) {
    struct Case {
        std::string text;
        unsigned long base, value, end;
        bool found;
    };
    const Case cases[] = {{"x12f", 10, 12, 3, true},
                          {"x12fG", 16, 0x12F, 4, true},
                          {"xFf", 16, 255, 3, true},
                          {"xg", 16, 0, 1, false},
                          {"x", 10, 0, 1, false},
                          {"x19", 8, 1, 2, true},
                          {"x10000000000000001", 16, 1, 18, true}};
    for (const Case& c : cases) {
        unsigned long pos = 1, value = 7;
        EXPECT_EQ(Http::parseNumber(c.text, pos, c.base, value), c.found) << c.text;
        EXPECT_EQ(value, c.value);
        EXPECT_EQ(pos, c.end);
    }
}

TEST(ProtocolHttpTest, Queries) {
    const std::pair<std::string, std::map<std::string, std::string>> cases[] = {
        {"", {}},
        {"a=1&b=2", {{"a", "1"}, {"b", "2"}}},
        {"a+b=c+d%2B%3d", {{"a b", "c d+="}}},
        {"=1&&a&b=", {{"a", ""}, {"b", ""}}},
        {"a=1&a=2=3", {{"a", "2=3"}}},
        {"%zz=%4&%00=%ff", {{"%zz", "%4"}, {std::string(1, '\0'), "\xff"}}}};
    for (const auto& [text, pairs] : cases) {
        std::map<std::string, std::string> query{{"old", "x"}};
        Http::parseQuery(text, query);
        EXPECT_EQ(query, pairs) << text;
        Plexa::ParamBag bag;
        Http::parseQuery(text, bag);
        EXPECT_EQ(bag.params().size(), pairs.size());
        const std::string printed = Http::createQuery(pairs);
        Http::parseQuery(printed, query);
        EXPECT_EQ(query, pairs) << printed;
    }
    Plexa::ParamBag bag;
    bag.setParam("b/", "x y&");
    bag.setParam("A", std::string(1000, '='));
    std::string coded;
    for (int i = 0; i < 1000; ++i) coded += "%3D";
    EXPECT_EQ(Http::createQuery(bag), "b%2F=x y%26&A=" + coded);
    EXPECT_EQ(Http::createQuery(Plexa::ParamBag()), "");
}

TEST(ProtocolHttpTest, Authorization) {
    struct Case {
        std::string value, user, password;
        bool passes;
    };
    const Case cases[] = {{"BASIC dTpw", "u", "p", true},
                          {"basic dTpw", "u", "q", false},
                          {"Basic dTpw", "", "p", false},
                          {"Basic", "u", "p", false},
                          {"Basic ", "u", "p", false},
                          {"Digest dTpw", "u", "p", false},
                          {"", "", "", true},
                          {"Basic dTpw", "u", "pp", false},
                          {"Basic dTpwOnE=", "u", "p:q", true},
                          {"Basic dXA=", "up", "", false},
                          {"Basic Og==", "u", "", false},
                          {"Basic " + std::string(100000, 'A'), "u", "", false}};
    for (const Case& c : cases) {
        MessageHeader header;
        header.setParam("authorization", c.value);
        EXPECT_EQ(Http::checkAuthorization(header, c.user, c.password), c.passes) << c.value;
        std::string user, password;
        const bool isParsed = Http::parseAuthorization(header, user, password);
        EXPECT_TRUE(!c.passes || c.value.empty() || (isParsed && user == c.user && password == c.password)) << c.value;
    }
    std::string user, password;
    EXPECT_FALSE(Http::parseAuthorization(MessageHeader(), user, password));
}

/// An engine over a peer that has sent `input` and then ended.
struct Engine : Http {
    explicit Engine(const std::string& input) : Http(nullptr) {
        peer.bytes = input;
        setCommunicator(&peer);
    }
    std::string sent() const { return peer.sent(); }
    ScriptedCommunicator peer;
};

TEST(EngineTest, Sends) {
    Engine engine("");
    Http::Request request;
    request.method = "GET";
    request.uri = "/";
    request.body = "b";
    request.header.setParam("N", "v");
    request.version.major = 0;
    EXPECT_TRUE(engine.sendRequest(static_cast<const Http::RequestLine&>(request), request.header));
    EXPECT_EQ(engine.sent(), "GET /\r\n");
    request.version.major = 1;
    EXPECT_TRUE(engine.sendRequest(request));
    const std::string head = "GET / HTTP/1.1\r\nN: v\r\n\r\n";
    EXPECT_EQ(engine.sent(), "GET /\r\n" + head + "b");
    EXPECT_TRUE(engine.sendBody("\0x", 2));
    EXPECT_FALSE(engine.sendBody("x", -1));
    EXPECT_FALSE(engine.sendChunkedBody("x", -1));
    EXPECT_TRUE(engine.sendChunkedBody("abcdefghijklmnopqrstuvwxyz", 26));
    EXPECT_TRUE(engine.sendChunkedBody(nullptr, 0));
    EXPECT_NE(engine.getStream()->flags() & std::ios_base::hex, 0);
    Http::Reply reply;
    reply.version.major = 0;
    EXPECT_TRUE(engine.sendReply(static_cast<const Http::StatusLine&>(reply), reply.header));
    reply.body = "old";
    EXPECT_TRUE(engine.sendReply(reply));
    reply.version = {"HTTP", 1, 1};
    reply.code = 200;
    reply.header.setParam("N", "v");
    EXPECT_TRUE(engine.sendReply(static_cast<const Http::StatusLine&>(reply), reply.header));
    EXPECT_TRUE(engine.sendReply(reply));
    const std::string status = "HTTP/1.1 200 \r\nN: v\r\n\r\n";
    EXPECT_EQ(engine.sent(), "GET /\r\n" + head + "b" + std::string("\0x", 2) +
                                 "1a\r\nabcdefghijklmnopqrstuvwxyz0\r\nold" + status + status + "old");
    reply.code = 1000;
    EXPECT_FALSE(engine.sendReply(reply));
    EXPECT_FALSE(engine.sendBody("x", 1));  // the stream has failed
    EXPECT_EQ(engine.peer.sent().size(), engine.sent().size());
}

TEST(EngineTest, ReceivesHeads) {
    Http::Request request;
    Http::Reply reply;
    MessageHeader header;
    Engine engine(
        "GET /a?b=1 HTTP/1.1\r\nN: v\r\n\r\nGET /c?d\r\n\r\nHTTP/1.1 200 OK\r\nM: w\r\n\r\nPUT /a?b HTTP/1.1\n\nX");
    EXPECT_TRUE(engine.receiveRequest(request));
    EXPECT_EQ(request.uri + request.query.getParam("b") + request.header.getParam("n"), "/a1v");
    EXPECT_TRUE(engine.receiveRequest(request));
    EXPECT_TRUE(request.header.empty());
    EXPECT_EQ(request.uri, "/c");
    EXPECT_TRUE(engine.receiveReply(reply));
    EXPECT_EQ(reply.header.getParam("m"), "w");
    EXPECT_TRUE(engine.receiveRequest(static_cast<Http::RequestLine&>(request), header));
    EXPECT_EQ(request.uri, "/a?b");
    header.setParam("old", "x");
    EXPECT_FALSE(engine.receiveRequest(static_cast<Http::RequestLine&>(request), header));
    EXPECT_TRUE(header.empty());
    header.setParam("old", "x");
    EXPECT_FALSE(engine.receiveReply(static_cast<Http::StatusLine&>(reply), header));
    EXPECT_TRUE(header.empty());
    Engine atEnd("GET /a?b=1 HTTP/1.1\r\nN: v");
    EXPECT_TRUE(atEnd.receiveRequest(request));
    EXPECT_EQ(request.query.getParam("b") + request.header.getParam("N"), "1v");
    Engine malformed("GET / HTTP/1.1\r\nA: b\r\nnothing\r\n");
    EXPECT_FALSE(malformed.receiveRequest(request));
    EXPECT_TRUE(request.header.empty());
}

TEST(EngineTest, ReceivesBodies) {
    Engine engine("hello");
    unsigned char buffer[10];
    int length = 3;
    EXPECT_TRUE(engine.receiveBody(buffer, length));
    length = 10;
    EXPECT_FALSE(engine.receiveBody(buffer, length));
    EXPECT_EQ(length, 2);
    EXPECT_EQ(buffer[1], 'o');
    EXPECT_FALSE(engine.receiveBody(buffer, length));
    EXPECT_EQ(length, 0);
    length = -1;
    EXPECT_FALSE(Engine("x").receiveBody(buffer, length));
}

/// What each call gives for a reader of `length` bytes: + or -, and the bytes.
std::string chunks(const std::string& input, int length) {
    Engine engine(input);
    std::string all;
    for (int i = 0; i < 6; ++i) {
        unsigned char buffer[100];
        int n = length;
        const bool isGood = engine.receiveChunkedBody(buffer, n);
        all += (isGood ? "+" : "-") + std::string(reinterpret_cast<char*>(buffer), static_cast<std::size_t>(n));
        if (n <= 0) break;
    }
    return all;
}

TEST(EngineTest, ReceivesChunks) {
    EXPECT_EQ(chunks("5\r\nhello\n0\n", 100), "+hello+");
    EXPECT_EQ(chunks("5\nhello\n0\n", 2), "+he+ll+o+");
    EXPECT_EQ(chunks("\n \t\n 00a;x=y\r\n0123456789 \nA\n0123456789\n0", 100), "+0123456789+0123456789+");
    EXPECT_EQ(chunks("5\r\nhello\r\n0\r\n", 100), "-hello+");  // the standard's coding
    EXPECT_EQ(chunks("3\nabcx\n0\n", 100), "-abc+");
    EXPECT_EQ(chunks("5\nhel", 100), "-hel-");
    EXPECT_EQ(chunks("5\nhello", 100), "-hello-");
    for (const char* const bad : {"zz\n", "", "\r\n5\n", "100000000\nabc\n", "fffffffffffffffff\nabc\n", "-1\nabc\n"})
        EXPECT_EQ(chunks(bad, 100), "-") << bad;
    EXPECT_EQ(chunks("0000000000001\na\n0\n", 100), "+a+");
    EXPECT_EQ(chunks("5\nhello\n", 0), "+");
    EXPECT_EQ(chunks("5\nhello\n", -1), "-");
    EXPECT_EQ(chunks("ffffffff\nabc", 100), "-abc-");
}

TEST(EngineTest, StreamsAreHandedOver) {
    Engine engine("");
    const std::unique_ptr<ioStream> released(engine.releaseStream());
    Http::Request request;
    Http::Reply reply;
    int length = 1;
    unsigned char byte = 0;
    EXPECT_FALSE(engine.releaseStream() != nullptr || engine.sendRequest(request) || engine.sendReply(reply) ||
                 engine.sendReply(static_cast<Http::StatusLine&>(reply), reply.header) || engine.sendBody("", 0) ||
                 engine.sendChunkedBody("", 0) || engine.receiveRequest(request) || engine.receiveReply(reply) ||
                 engine.receiveBody(&byte, length) || engine.receiveChunkedBody(&byte, length));
    engine.setStream(released.get());
    EXPECT_TRUE(engine.sendBody("x", 1));
    ScriptedCommunicator other;
    other.bytes = "3\nabc\n";
    engine.setCommunicator(&other);  // the old stream stays the caller's
    length = 1;
    EXPECT_TRUE(engine.receiveChunkedBody(&byte, length));
    engine.setStream(released.get());  // and forgets the chunk
    engine.peer.bytes = "1\nz\n";
    length = 1;
    EXPECT_TRUE(engine.receiveChunkedBody(&byte, length));
    EXPECT_EQ(byte, 'z');
    EXPECT_EQ(engine.peer.sent(), "x");
}

}  // namespace
