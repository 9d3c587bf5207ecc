#include "WebFixture.h"

#include <Varnex/web/WebPageMetrics.h>
#include <Varnex/web/WebStatistics.h>

struct WebServerTest : testing::Test {
    WebServerTest() {
        server.addPage("/ten", page("0123456789"));
        server.addPage("/echo", WebPageCallback(&echo));
    }
    MemoryServer server;
    CapturedDiagnostics printed;
};

const std::string kNotFound =
    "<HTML>\n  <HEAD>\n    <TITLE>404 Not Found</TITLE>\n  </HEAD>\n  <BODY>\n    <H1>404 Not Found</H1>\n  </BODY>\n"
    "</HTML>\n";
const std::string kTen = "0123456789";
const std::string kAllow = "Allow: GET, HEAD, POST, OPTIONS, DELETE\r\n";

TEST_F(WebServerTest, AnswersEachKindOfRequest) {
    const std::string close = "close";
    const std::pair<std::string, std::string> cases[] = {
        {"GET /ten HTTP/1.1\r\n\r\n", replyText("200 OK", "", kTen)},
        {"GET http://host/ten#x HTTP/1.1\r\nConnection: x\r\n\r\n", replyText("200 OK", "", kTen)},
        {"GET /ten HTTP/1.1\r\nConnection: Close\r\n\r\n", replyText("200 OK", "", kTen, close)},
        {"GET /ten HTTP/1.0\r\n\r\n", replyText("200 OK", "", kTen, close)},
        {"GET /ten HTTP/1.0\r\nconnection: keep-alive\r\n\r\n", replyText("200 OK", "", kTen)},
        {"GET /ten\r\n", replyText("200 OK", "", kTen, close)},
        {"\r\n \r\nGET /ten HTTP/0.9\r\n", replyText("200 OK", "", kTen, close)},
        {"GET /Ten HTTP/1.1\r\n\r\n", replyText("404 Not Found", "Content-Type: text/html\r\n", kNotFound)},
        {"PUT /ten HTTP/1.1\r\nContent-Length: 1\r\n\r\nx", replyText("405 Method Not Allowed", kAllow, "", close)},
        {"get /ten HTTP/1.1\r\n\r\n", replyText("405 Method Not Allowed", kAllow, "", close)},
        {"PUT /ten HTTP/2.0\r\n\r\n", replyText("505 HTTP Version not supported", "", "", close)},
        {"POST /echo?q HTTP/1.1\r\nContent-Length: 3\r\n\r\nabc", replyText("200 OK", "", "POST /echo [abc]")},
        {"POST /echo HTTP/1.1\r\nContent-Length: -3\r\n\r\n", replyText("200 OK", "", "POST /echo []", close)},
        {"DELETE /echo HTTP/1.1\r\n\r\n", replyText("200 OK", "", "DELETE /echo []")},
    };
    for (const auto& [request, reply] : cases)
        for (const std::size_t piece : {1U, 7U, 1000U}) EXPECT_EQ(server.answer(request, {piece}), reply) << request;
    EXPECT_EQ(printed.errors(), "");
    const std::string head = server.answer("HEAD /ten HTTP/1.1\r\n\r\n");
    EXPECT_EQ(head + kTen, replyText("200 OK", "", kTen));
}

TEST_F(WebServerTest, WhatFollowsAnUnclearEndIsNoRequest) {
    const std::string next = "GET /ten HTTP/1.1\r\n\r\n";
    for (const char* request : {
             "GET /echo HTTP/1.1\r\nContent-Length: 5\r\n\r\n",
             "POST /echo HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n",
             "POST /echo HTTP/1.1\r\nContent-Length: 0\r\nContent-length : 5\r\n\r\n",
             "POST /echo HTTP/1.1\r\nContent-Length: 0x0\r\n\r\n",
         }) {
        const std::string sent = server.answer(request + next);
        EXPECT_THAT(sent, HasSubstr("Connection: close")) << request;
        EXPECT_THAT(sent, Not(HasSubstr(kTen))) << request;
    }
    EXPECT_THAT(server.answer(next + next), HasSubstr(replyText("200 OK", "", kTen) + "HTTP/1.1 200 OK"));
}

TEST_F(WebServerTest, RefusesWhatIsNoRequest) {
    server.setMaxRequestHead(100);
    server.setMaxRequestBody(4);
    const std::string cannotReceive = "ERROR: WebServer: Cannot receive request.\n";
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"GET\r\n", "HTTP/1.1 400 ", cannotReceive},
        {"GET /ten HTTP/1.x\r\n", "HTTP/1.1 400 ", cannotReceive},
        {"GET /ten HTTP/1.1\r\n: a\r\n\r\n", "HTTP/1.1 400 ", cannotReceive},
        {"GET /ten HTTP/1.1\r\nA: b", "HTTP/1.1 400 ", cannotReceive},
        {"GET /ten HTTP/1.1\r\nA: " + std::string(100, 'b'), "HTTP/1.1 431 Request Header Fields Too Large",
         cannotReceive},
        {"GET /ten ICY/1.1\r\n\r\n", "", "ERROR: WebServer: Got a non-HTTP request.\n"},
        {"POST /echo HTTP/1.1\r\nContent-Length: 5\r\n\r\nabcde", "HTTP/1.1 413 ", ""},
        {"POST /echo HTTP/1.1\r\nContent-Length: 4\r\n\r\nabc", "", "ERROR: WebServer: Cannot receive body.\n"},
        {"", "", ""},
        {"\r\n", "HTTP/1.1 400 ", cannotReceive},
    };
    std::string all;
    for (const auto& [request, reply, line] : cases) {
        const std::string sent = server.answer(request);
        EXPECT_EQ(sent.substr(0, reply.size()), reply) << request;
        EXPECT_EQ(sent.find("Connection: Keep-Alive"), std::string::npos) << request;
        EXPECT_EQ(printed.errors(), all += line) << request;
    }
}

TEST_F(WebServerTest, TellsWhichStepOfAConnectionFailed) {
    const auto answer = [this](auto change) {
        auto connection = std::make_unique<MemoryServer::Connection>(server);
        connection->bytes = "GET /ten HTTP/1.1\r\n\r\n";
        change(*connection);
        return server.answer(std::move(connection));
    };
    EXPECT_EQ(answer([](auto& c) { c.failWait = 1; }), "");
    EXPECT_EQ(answer([](auto& c) { c.closed = true; }), "");
    EXPECT_EQ(answer([](auto& c) { c.failSend = 1; }), "");
    EXPECT_EQ(answer([](auto& c) { c.breaks = 1; }), "");
    EXPECT_EQ(printed.errors(),
              "ERROR: Webserver: Cannot wait for data.\nERROR: Webserver: Cannot determine data available.\n"
              "ERROR: WebServer: Cannot send reply.\n");
}

TEST_F(WebServerTest, AConnectionEndsWithItsHundredthRequest) {
    std::string requests;
    for (int i = 0; i < 101; ++i) requests += "GET /ten HTTP/1.1\r\n\r\n";
    const std::string sent = server.answer(requests);
    EXPECT_EQ(server.getStatistics()->replies[2], 100U);
    EXPECT_EQ(sent.find("Connection: close"), sent.rfind("Connection: "));
    server.setMaxKeepAliveRequests(0);
    server.answer(requests);
    EXPECT_EQ(server.getStatistics()->replies[2], 201U);
}

TEST_F(WebServerTest, FindsPagesByPathAndThenByPattern) {
    const char* const kPaths[] = {"/a/*", "/a/b*", "/a/?c", "/a\\*", "/*/x/[1]", "/[1]"};
    for (const char* path : kPaths) server.addPage(path, page(path));
    server.addPage("/a/b*", page("replaced"));
    server.addPage("/a/bc", page("exact"));
    const auto find = [this](const std::string& path) {
        const std::string sent = server.answer("GET " + path + " HTTP/1.1\r\n\r\n");
        return sent.substr(sent.find("\r\n\r\n") + 4);
    };
    const std::pair<const char*, std::string> cases[] = {
        {"/a/bc", "exact"}, {"/a/bd", "replaced"},  {"/a/cc", "/a/?c"}, {"/a/c/x", "/a/*"}, {"/a\\*", "/a\\*"},
        {"/a*", kNotFound}, {"/k/x/1", "/*/x/[1]"}, {"/1", kNotFound},  {"/[1]", "/[1]"}};
    for (const auto& [path, body] : cases) EXPECT_EQ(find(path), body) << path;
    server.removePage("/a/bc");
    server.setLongestMatch(false);
    EXPECT_EQ(find("/a/bc"), "/a/*");
    for (const char* wild : {"*", "?a", "a\\b*"}) EXPECT_TRUE(WebServer::hasWildcards(wild)) << wild;
    for (const char* plain : {"", "\\*", "a\\?", "[a]"}) EXPECT_FALSE(WebServer::hasWildcards(plain)) << plain;
}

TEST_F(WebServerTest, AsksForAuthorizationBeforeAPageRuns) {
    server.setUser("u");
    server.setPassword("p");
    server.setRealm("a \"\\b\r\n");
    const std::string sent = server.answer("POST /echo HTTP/1.1\r\nContent-Length: 1\r\n\r\nx");
    EXPECT_EQ(sent, replyText("401 Unauthorized", "WWW-Authenticate: Basic realm=\"a \\\"\\\\b\"\r\n", ""));
    EXPECT_THAT(server.answer("GET /ten HTTP/1.1\r\nauthorization: BASIC dTpw\r\n\r\n"), HasSubstr(kTen));
}

TEST_F(WebServerTest, APageThatFailsCostsItsOwnConnection) {
    server.addPage("/false", TestPage([](auto...) { return false; }));
    server.addPage("/throws", TestPage([](auto...) -> bool { throw std::runtime_error("page"); }));
    EXPECT_EQ(server.answer("GET /false HTTP/1.1\r\n\r\nGET /ten HTTP/1.1\r\n\r\n"), "");
    EXPECT_THAT(server.answer("GET /throws HTTP/1.1\r\n\r\nGET /ten HTTP/1.1\r\n\r\n"),
                testing::AllOf(StartsWith("HTTP/1.1 500 "), HasSubstr("close"), Not(HasSubstr(kTen))));
    EXPECT_EQ(printed.errors(), "ERROR: page\n");
}

TEST_F(WebServerTest, NothingThatAPageSetsEndsALineOfTheHead) {
    server.addPage("/evil", TestPage([](WebClient*, const Request&, Reply& reply) {
                       reply.phrase = "OK\r\nA: 1";
                       reply.header.setParam("X\nB: 2", std::string("a\r\n\r\nC\0D", 8));
                       return true;
                   }));
    EXPECT_EQ(server.answer("GET /evil HTTP/1.1\r\n\r\n"), replyText("200 OK  A: 1", "X B: 2: a    C D\r\n", ""));
}

TEST_F(WebServerTest, LogsRequestsAndRepliesAsHtml) {
    Reply log;
    server.setLogSize(4);
    server.answer("POST /a<b?x=1&y=%22 HTTP/1.1\r\nCookie: s\r\nA: '&\r\nContent-Length: 0\r\n\r\n");
    server.createLogPage({}, log);
    const std::string table = "<P><TABLE CELLSPACING=0 CELLPADDING=0 BORDER=1 WIDTH=100%>\n";
    const std::string rule = "\n<HR>\n\n";
    EXPECT_THAT(log.body,
                StartsWith("<HTML>\n  <HEAD>\n    <TITLE>WebServer Log</TITLE>\n  </HEAD>\n  <BODY>\n    <H1>WebServer "
                           "Log</H1>\n<P>Accepted client unknown on </P>\n" +
                           rule + "<P>Got request from unknown</P>\n" + table +
                           "<TR ><TH>Method</TH><TD WIDTH=100%>POST</TD></TR>\n"
                           "<TR><TH ALIGN=LEFT VALIGN=TOP>URL</TH><TD>/a&lt;b</TD></TR>\n"
                           "<TR><TH ALIGN=LEFT VALIGN=TOP>Query</TH><TD>x=1<BR>\ny=&quot;</TD></TR>\n"
                           "<TR><TH ALIGN=LEFT VALIGN=TOP>Version</TH><TD>HTTP/1.1</TD></TR>\n"
                           "<TR><TH ALIGN=LEFT VALIGN=TOP>Header</TH><TD>Cookie: ***<BR>\nA: &#39;&amp;<BR>\n"
                           "Content-Length: 0</TD></TR>\n</TABLE></P>\n" +
                           rule + "<P>Reply</P>\n" + table +
                           "<TR ><TH>Status</TH><TD WIDTH=100%>HTTP/1.1 404 Not Found</TD></TR>\n"));
    EXPECT_THAT(log.body, testing::EndsWith(rule + "<P>Disconnected from client unknown</P>\n  </BODY>\n</HTML>\n"));
    server.addLog("last");
    server.createLogPage({}, log);
    EXPECT_THAT(log.body, testing::AllOf(Not(HasSubstr("Accepted")), HasSubstr(rule + "last  </BODY>")));
    server.setLogSize(-1);
    server.addLog("none");
    server.createLogPage({}, log);
    EXPECT_THAT(log.body, HasSubstr("</H1>\n  </BODY>"));
}

TEST_F(WebServerTest, AccessLogAndMetricsTellOfReplies) {
    std::string line;
    server.setAccessLog([&](const WebAccess& access) {
        line = access.peer + " " + access.method + " " + access.uri + " " + access.version + " " +
               std::to_string(access.code) + " " + std::to_string(access.bytes);
    });
    server.addPage("/metrics", WebPageMetrics(server.getStatistics()));
    server.answer("GET /ten?x HTTP/1.0\r\n\r\n");
    EXPECT_EQ(line, "unknown GET /ten HTTP/1.0 200 10");
    const std::string text = server.answer("GET /metrics HTTP/1.1\r\n\r\n");
    for (const char* part : {"\nvarnex_http_connections_total 2\n", "\nvarnex_http_connections 1\n",
                             "\nvarnex_http_replies_total{code=\"2xx\"} 1\n", "_bytes_total 10\n", "_seconds_count 1\n",
                             "{le=\"+Inf\"} 1\n"})
        EXPECT_THAT(text, HasSubstr(part));
}

TEST_F(WebServerTest, ClosingLeavesTheWhiteboard) {
    std::string queries;
    const auto registry = [&](const std::string& query) { return queries += query + " ", true; };
    for (const bool deregisters : {true, false}) {
        server.getWhiteboard().open(registry);
        EXPECT_TRUE(server.getWhiteboard().addServer("name"));
        server.setDeregisters(deregisters);
        server.close();
        EXPECT_FALSE(server.getWhiteboard().ping());
    }
    EXPECT_EQ(queries, "addServer?name removeServer?name addServer?name ");
}
