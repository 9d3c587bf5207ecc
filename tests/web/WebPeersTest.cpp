#include "WebFixture.h"

#include <Varnex/web/WebPageDirectory.h>
#include <Varnex/web/icons.h>
#include <tests/support/Eventually.h>
#include <tests/support/PeerServers.h>

#include <mutex>

namespace {

const std::string kPython = R"(
import http.client, sys
c = http.client.HTTPConnection("127.0.0.1", int(sys.argv[1]), timeout=20)
for method, path, body in (("GET", "/echo", None), ("POST", "/echo", "abc"), ("HEAD", "/file", None), ("GET", "/file", None)):
    c.request(method, path, body)
    r = c.getresponse()
    print(r.status, len(r.read()), r.getheader("Content-Length"))
)";

const std::string kPage = R"(<!DOCTYPE html><img src="/icon.ico" id="icon"><form method="post" action="/form">
<input name="value"></form><script src="script.js"></script>)";

// Tells in the form, which it submits, what has come.
const std::string kScript = R"(
const icon = document.getElementById("icon");
async function send() {
    const text = await (await fetch("/echo")).text();
    document.forms[0].value.value = text + " " + icon.naturalWidth;
    document.forms[0].submit();
}
icon.complete ? send() : icon.onload = send;
)";

template <class Server>
struct WebPeersTest : testing::Test {
    WebPeersTest() {
        folder.write("index.html", kPage);
        folder.write("script.js", kScript);
        folder.write("file", std::string(500000, 'f'));
        server.addPage("/*", WebPageDirectory("/", folder.path("")));
        server.addPage("/echo", WebPageCallback(&echo));
        server.addPage("/form", TestPage([this](WebClient*, const Request& request, Reply&) {
                           Plexa::ParamBag fields;
                           ProtocolHTTP::parseQuery(request.body, fields);
                           const std::lock_guard lock(mutex);
                           return form = fields.getParam("value"), true;
                       }));
        server.addPage("/icon.ico", WebPageStatic(tarvolo16x16_ico, sizeof tarvolo16x16_ico, "image/x-icon"));
        server.start();
    }
    std::string url() { return "http://127.0.0.1:" + std::to_string(server.getLocalPort()); }
    std::string posted() {
        const std::lock_guard lock(mutex);
        return form;
    }
    std::mutex mutex;
    std::string form;
    TestFolder folder;
    Running<Server> server;
};

using Servers = testing::Types<ThreadedWebServer, PolledWebServer>;
TYPED_TEST_SUITE(WebPeersTest, Servers);

TYPED_TEST(WebPeersTest, ServesPythonAndCurl) {
    ChildProcess python("/usr/bin/python3 -I -c '" + kPython + "' " + std::to_string(this->server.getLocalPort()));
    EXPECT_EQ(python.rest(ChildProcess::Output), "200 12 12\n200 16 16\n200 0 500000\n200 500000 500000\n");
    const std::string large = this->folder.path("upload"), url = this->url();
    this->folder.write("upload", std::string(300000, 'u'));
    ChildProcess curl("curl -s --max-time 20 -H 'Expect: 100-continue' --data-binary @" + large + " " + url +
                      "/echo --next -s -r 499998- " + url + "/file");
    const std::string all = curl.rest(ChildProcess::Output);
    EXPECT_EQ(all.size(), 300015U);
    EXPECT_THAT(all, testing::EndsWith("u]ff"));
}

TYPED_TEST(WebPeersTest, ServesManyAtOnce) {
    ChildProcess wrk("wrk -t1 -c32 -d1s " + this->url() + "/echo");
    const std::string report = wrk.rest(ChildProcess::Output);
    EXPECT_THAT(report, testing::AllOf(HasSubstr("Requests/sec"), Not(HasSubstr("errors")), Not(HasSubstr("Non-2xx"))));
    EXPECT_EQ(wrk.wait(), 0);
}

TYPED_TEST(WebPeersTest, ServesABrowser) {
    const TestFolder profile;
    ChildProcess browser(
        "timeout 50 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-sync "
        "--disable-background-networking --disable-component-update --disable-dev-shm-usage --user-data-dir=" +
        profile.path("") + " " + this->url() + "/ >/dev/null 2>&1");
    EXPECT_TRUE(eventually([this] { return !this->posted().empty(); }));
    EXPECT_EQ(this->posted(), "GET /echo [] 16");
    browser.wait(SIGTERM);
}

}  // namespace
