#include <Varnex/url/LoadOptions.h>
#include <Varnex/url/URL.h>
#include <Varnex/url/URLStream.h>
#include <Varnex/url/openURL.h>
#include <tests/support/PeerServers.h>

#include <gmock/gmock.h>

#include <iterator>

using namespace Varnex;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// Type, length and content; "! " and the reason where it does not open.
std::string loaded(const std::string& url, const LoadOptions& options = {}) try {
    LoadOptions::setCurrent(std::make_shared<LoadOptions>(options));
    const std::unique_ptr<URLImpl::Stream> stream(URL::resolve({}, url)->open());
    LoadOptions::setCurrent(nullptr);
    const std::string content(std::istreambuf_iterator<char>(*stream), {});
    return stream->getMimeType() + " " + std::to_string(stream->getContentLength()) + " " + content;
} catch (const LoadError& error) {
    return "! " + error.getReason();
}

LoadOptions from(long long offset) {
    LoadOptions options;
    options.offset = offset;
    return options;
}

LoadOptions trusting(const std::string& authorities) {
    LoadOptions options;
    options.authorities = authorities;
    return options;
}

/// Files to serve, one of them large.
struct LoaderPeersTest : testing::Test {
    LoaderPeersTest() {
        folder.write("large.png", large);
        folder.write("small.html", "content");
        folder.write("empty", "");
    }
    static void expectLoaded(const std::vector<std::pair<std::string, std::string>>& cases) {
        for (const auto& [url, expected] : cases) {
            const std::string text = loaded(url);
            EXPECT_TRUE(text == expected) << url << ": " << text.substr(0, 200);
        }
    }
    static std::string lengthAnd(const std::string& content) { return std::to_string(content.size()) + " " + content; }
    const std::string large = std::string(5 << 20, 'x') + "end";
    const TestFolder folder;
};

TEST_F(LoaderPeersTest, Nginx) {
    folder.write("users", "user:{PLAIN}secret\n");
    const Nginx nginx(folder, R"(
        default_type a/b;
        location /chunked { alias large.png; ssi on; ssi_types *; }
        location /moved { return 301 /small.html; }
        location /private { auth_basic x; auth_basic_user_file users; alias small.html; }
    )");
    expectLoaded({{nginx.url("http", "/large.png"), "a/b " + lengthAnd(large)},
                  {nginx.url("http", "/empty"), "a/b 0 "},
                  {nginx.url("http", "/chunked"), "a/b -1 " + large},
                  {nginx.url("http", "/moved"), "text/html 7 content"},
                  {nginx.url("http", "/private", "user:secret@127.0.0.1"), "a/b 7 content"}});
    EXPECT_THAT(loaded(nginx.url("http", "/private")), HasSubstr("401 Authorization Required"));
    EXPECT_EQ(loaded(nginx.url("http", "/small.html"), from(4)), "text/html 3 ent");
}

TEST_F(LoaderPeersTest, OnlyATrustedCertificateOfTheRightNameIsAccepted) {
    Nginx::makeCertificate(folder);
    const Nginx nginx(folder, "", "ssl");
    const std::string url = nginx.url("https", "/small.html");
    const LoadOptions options = trusting(folder.path("certificate"));
    EXPECT_EQ(loaded(url, options), "text/html 7 content");
    EXPECT_THAT(loaded(url), HasSubstr("self-signed certificate"));  // also while that connection is kept
    EXPECT_THAT(loaded(nginx.url("https", "/small.html", "localhost"), options), HasSubstr("'localhost'"));
}

TEST_F(LoaderPeersTest, Ftp) {
    const FtpServer ftp(folder);
    expectLoaded({{ftp.url("ftp", "/large.png"), "image/png " + lengthAnd(large)},
                  {ftp.url("ftp", "/small.html;type=i"), "text/html 7 content"},
                  {ftp.url("ftp", "/small.html;type=a"), "text/html -1 content"},
                  {ftp.url("ftp", "/small.html", "user:secret@127.0.0.1"), "text/html 7 content"},
                  {ftp.url("ftp", "/empty"), " 0 "}});
    EXPECT_THAT(loaded(ftp.url("ftp", "/")), HasSubstr(" small.html\n"));
    EXPECT_EQ(loaded(ftp.url("ftp", "/small.html"), from(4)), "text/html 3 ent");
    for (const char* host : {"user:wrong@127.0.0.1", "nobody@127.0.0.1"})
        EXPECT_THAT(loaded(ftp.url("ftp", "/small.html", host)), StartsWith("! Access denied"));
    for (const char* path : {"/none", "/none/"}) EXPECT_THAT(loaded(ftp.url("ftp", path)), StartsWith("! ")) << path;
}

TEST_F(LoaderPeersTest, FtpServersCannotSendUsElsewhere) {
    const FtpServer ftp(folder, "Handler.masquerade_address = \"127.0.0.2\"\ndel Handler.proto_cmds[\"EPSV\"]");
    EXPECT_EQ(loaded(ftp.url("ftp", "/small.html")), "text/html 7 content");
}

}  // namespace
