#include "WebFixture.h"

#include <Varnex/transport/IOException.h>
#include <Varnex/web/WebPageDirectory.h>
#include <Varnex/web/WebPageFile.h>
#include <Varnex/web/WebPageFileSystem.h>
#include <Varnex/web/WebPageRedirection.h>
#include <Varnex/web/WebPageRoutes.h>
#include <Varnex/web/icons.h>
#include <tests/support/TestFolder.h>

#include <cstring>
#include <sstream>

#include <sys/stat.h>
#include <unistd.h>

/// What a clone of a page makes of a request; the code is 0 when it makes nothing.
Reply replyOf(const WebPage& page, const Request& request, WebClient* client = nullptr) {
    const std::unique_ptr<WebPage> clone(page.clone());
    Reply reply;
    reply.code = 7;
    const bool isMade = clone->create(client, request, reply);
    EXPECT_TRUE(isMade || reply.code == 7);
    if (!isMade) reply.code = 0;
    return reply;
}

Request requestOf(const std::string& uri, const std::string& header = "", const std::string& method = "GET") {
    Request request;
    std::istringstream(method + " " + uri + " HTTP/1.1\r\n" + header + "\r\n") >> request;
    return request;
}

std::string seen(const Reply& reply) {
    return std::to_string(reply.code) + " " + reply.header.getParam("Content-Type", "-") + " " + reply.body;
}

TEST(WebPagesTest, EachKindFillsInItsReply) {
    const Reply moved = replyOf(WebPageRedirection("http://a/b"), {});
    EXPECT_EQ(seen(moved) + moved.header.getParam("Location"), "302 - http://a/b");
    EXPECT_EQ(seen(replyOf(WebPageStatic("a\0b", 3, "x/y", 418), {})), "418 x/y " + std::string("a\0b", 3));
    EXPECT_EQ(seen(replyOf(WebPageStatic(nullptr, 0, ""), {})), "200  ");
    const auto tell = [](WebClient* client, const Request&, Reply& reply) {
        reply.body = client == nullptr ? "nobody" : "client";
        return true;
    };
    MemoryServer server;
    WebClient client(server, std::make_unique<ScriptedCommunicator>(), true);
    EXPECT_EQ(replyOf(WebPageCallback(WebPageCallback::ClientFunction(tell)), {}, &client).body, "client");
    EXPECT_EQ(replyOf(WebPageCallback(&echo), requestOf("/a"), &client).body, "GET /a []");
    for (const auto* icon : {&tarvolo16x16_ico, &kesvro16x16_ico, &wolbrin16x16_ico})
        EXPECT_EQ(std::memcmp(*icon, "\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0\x68\4\0\0\x16\0\0\0\x28", 23), 0);
}

TEST(WebPagesTest, FilesAreReadWholeOrNotAtAll) {
    const TestFolder folder;
    const std::string bytes(10000, '\0');
    folder.write("a.PNG", bytes);
    folder.write("empty.html", "");
    folder.write("none", "x");
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("/etc/hostname", folder.path("link").c_str()), 0);
    EXPECT_EQ(seen(replyOf(WebPageFile(folder.path("a.PNG")), {})), "200 image/png " + bytes);
    EXPECT_EQ(seen(replyOf(WebPageFile(folder.path("empty.html")), {})), "200 text/html ");
    EXPECT_EQ(seen(replyOf(WebPageFile(folder.path("none")), {})), "200  x");
    for (const char* name : {"missing", "fifo", "."}) EXPECT_EQ(replyOf(WebPageFile(folder.path(name)), {}).code, 0U);
    WebPageFile small(folder.path("a.PNG"));
    small.setMaxFileSize(9999);
    EXPECT_EQ(replyOf(small, {}).code, 0U);

    WebPageFileSystem files("/files/", folder.path(""));
    const std::string up = "/files/../../../../../../../../etc/hostname";
    for (const std::string uri : {"/files/none", "/files/.//none", "/files/link", up.c_str()}) {
        files.setConfined(false);
        EXPECT_EQ(replyOf(files, requestOf(uri)).code, 200U) << uri;
        files.setConfined(true);
        EXPECT_EQ(replyOf(files, requestOf(uri)).code, uri.ends_with("none") ? 200U : 0U) << uri;
    }
    for (const char* uri : {"/x/files/none", "/files", "/files/"}) EXPECT_EQ(replyOf(files, requestOf(uri)).code, 0U);
}

struct WebPageDirectoryTest : testing::Test {
    WebPageDirectoryTest() {
        std::filesystem::create_directories(folder.path("www/sub/d"));
        folder.write("secret", "secret");
        folder.write("www/a.txt", text);
        folder.write("www/sub/index.html", "index");
        folder.write("www/sub/d/<&\">.txt", "x");
        folder.write("www/.hidden", "x");
        folder.write("www/big.bin", std::string(200000, 'b'));
        for (const char* target : {"../secret", "a.txt", "/etc"})
            EXPECT_EQ(::symlink(target, folder.path("www/to" + std::to_string(++links)).c_str()), 0);
        EXPECT_EQ(::mkfifo(folder.path("www/fifo").c_str(), 0600), 0);
        page.emplace("/f/", folder.path("www"));
    }
    Reply get(const std::string& path, const std::string& header = "") {
        return replyOf(*page, requestOf("/f/" + path, header));
    }
    const std::string text = std::string(1000, 'a') + "0123456789";
    int links = 0;
    TestFolder folder;
    std::optional<WebPageDirectory> page;
};

TEST_F(WebPageDirectoryTest, ServesNothingFromOutside) {
    for (const char* path : {"../secret", "%2e%2e/secret", "sub/../../secret", "..%2fsecret", "..\\secret", "to1",
                             "to3/hostname", "/etc/hostname", "%2fetc/hostname", ".hidden", "sub/%2e./a.txt", "fifo",
                             "a.txt%00", "a.txt/", "missing", "%", "sub/d/"}) {
        const Reply reply = get(path);
        EXPECT_EQ(reply.code, 404U) << path;
        EXPECT_THAT(reply.body, testing::AllOf(Not(HasSubstr("secret")), HasSubstr("404 Not Found"))) << path;
    }
    EXPECT_EQ(get(std::string(60000, 'a')).code, 404U);
    EXPECT_EQ(get("to2").body, text);
    EXPECT_EQ(seen(get("%61.txt")), "200 text/plain " + text);
    EXPECT_EQ(replyOf(*page, requestOf("/x/a.txt")).code, 404U);
    const Reply post = replyOf(*page, requestOf("/f/a.txt", "", "POST"));
    EXPECT_EQ(std::to_string(post.code) + post.header.getParam("Allow"), "405GET, HEAD");
    EXPECT_THROW(WebPageDirectory("/", folder.path("none")), IOException);
}

TEST_F(WebPageDirectoryTest, FoldersShowTheirIndexOrAListing) {
    EXPECT_EQ(seen(get("sub/")), "200 text/html index");
    EXPECT_EQ(get("sub").code, 301U);
    EXPECT_EQ(get("sub").header.getParam("Location"), "./sub/");
    page->setListing(true);
    EXPECT_THAT(get("sub/d/").body, HasSubstr("HREF=\"./%3c%26%22%3e.txt\">&lt;&amp;&quot;&gt;.txt</A>"));
    EXPECT_THAT(get("").body, testing::AllOf(HasSubstr("\"./sub/\""), Not(HasSubstr("hidden")), Not(HasSubstr("to1"))));
    page->setIndex("");
    EXPECT_THAT(get("sub/").body, HasSubstr("index.html"));
}

TEST_F(WebPageDirectoryTest, SendsNoMoreThanTheClientNeeds) {
    const Reply whole = get("a.txt");
    const std::string tag = whole.header.getParam("ETag"), date = whole.header.getParam("Last-Modified");
    const auto with = [](const std::string& name, const std::string& value) { return name + ": " + value + "\r\n"; };
    const std::string old = "Sun, 06 Nov 1994 08:49:37 GMT", range = with("Range", "bytes=1000-1002");
    const std::tuple<std::string, unsigned long, std::string> cases[] = {
        {with("If-None-Match", "\"x\", W/" + tag), 304, ""},
        {with("If-None-Match", "*"), 304, ""},
        {with("If-None-Match", "\"x\"") + with("If-Modified-Since", date), 200, text},
        {with("If-Modified-Since", date), 304, ""},
        {with("If-Modified-Since", old), 200, text},
        {range, 206, "012"},
        {with("Range", "bytes=-3"), 206, "789"},
        {with("Range", "bytes=1007-"), 206, "789"},
        {with("Range", "bytes=1009-99999999999"), 206, "9"},
        {with("Range", "bytes=1010-"), 416, ""},
        {with("Range", "bytes=-0"), 416, ""},
        {with("Range", "bytes=2-1"), 200, text},
        {with("Range", "bytes=0-1,3-4"), 200, text},
        {with("Range", "bytes=99999999999999999999-"), 200, text},
        {range + with("If-Range", tag), 206, "012"},
        {range + with("If-Range", old), 200, text},
    };
    for (const auto& [header, code, body] : cases) {
        const Reply reply = get("a.txt", header);
        EXPECT_EQ(reply.code, code) << header;
        EXPECT_EQ(code == 416 ? "" : reply.body, body) << header;
    }
    EXPECT_EQ(get("a.txt", range).header.getParam("Content-Range"), "bytes 1000-1002/1010");
    EXPECT_EQ(get("a.txt", with("Range", "bytes=1010-")).header.getParam("Content-Range"), "bytes */1010");

    const std::string accepts = with("Accept-Encoding", "br, gzip;q=0.5");
    const Reply zipped = get("a.txt", accepts);
    EXPECT_EQ(zipped.header.getParam("Content-Encoding") + zipped.body.substr(0, 2), "gzip\x1f\x8b");
    EXPECT_LT(zipped.body.size(), 100U);
    EXPECT_EQ(get("a.txt", accepts + with("If-None-Match", tag)).code, 200U);
    EXPECT_EQ(get("a.txt", accepts + with("If-None-Match", zipped.header.getParam("ETag"))).code, 304U);
    for (const std::string& header : {with("Accept-Encoding", "gzip;q=0.0, br"), accepts + range})
        EXPECT_FALSE(get("a.txt", header).header.hasParam("Content-Encoding")) << header;
    EXPECT_FALSE(get("big.bin", accepts).header.hasParam("Content-Encoding"));
}

TEST(WebPageRoutesTest, FindsFunctionsByMethodAndPattern) {
    const auto tell = [](const std::string& name) {
        return [name](const Request&, const Plexa::ParamBag& captures, Reply& reply) {
            reply.code = 200;
            reply.body = name;
            for (const auto& [key, value] : captures.params()) reply.body += " " + key + "=" + value;
            return true;
        };
    };
    WebPageRoutes routes("/api");
    routes.add("GET", "/points", tell("all")).add("POST", "/points", tell("new"));
    routes.add("GET", "/points/{id}/name", tell("name")).add("DELETE", "/points/{id}", tell("delete"));
    routes.add("GET", "/files/{*path}", tell("file"));
    const std::tuple<const char*, const char*, unsigned long, std::string> cases[] = {
        {"GET", "/api/points?x=1", 200, "all"},
        {"HEAD", "/api/points", 200, "all"},
        {"POST", "/api/points", 200, "new"},
        {"GET", "/api/points/a%20b%2fc/name", 200, "name id=a b/c"},
        {"DELETE", "/api/points/7", 200, "delete id=7"},
        {"GET", "/api/files/a/b", 200, "file path=a/b"},
        {"GET", "/api/points//name", 404, ""},
        {"GET", "/api/points/7", 405, "DELETE, OPTIONS"},
        {"PUT", "/api/points", 405, "GET, HEAD, POST, OPTIONS"},
        {"OPTIONS", "/api/points", 204, "GET, HEAD, POST, OPTIONS"},
        {"GET", "/api/points/", 404, ""},
    };
    for (const auto& [method, uri, code, body] : cases) {
        const Reply reply = replyOf(routes, requestOf(uri, "", method));
        EXPECT_EQ(reply.code, code) << method << uri;
        EXPECT_EQ(code == 200 ? reply.body : reply.header.getParam("Allow"), body) << method << uri;
    }
}
