// A web server for wrk: ours_c --mode=thread|polled --port=P [--max-seconds=60]
#include "c_common.hpp"

#include <Varnex/web/PolledWebServer.h>
#include <Varnex/web/ThreadedWebServer.h>
#include <Varnex/web/WebPageStatic.h>

#include <atomic>
#include <thread>

using namespace bench;

namespace {

void prepare(Varnex::WebServer& server, const std::string& page) {
    server.addPage("/", Varnex::WebPageStatic(page.data(), static_cast<std::uint32_t>(page.size()), "text/html"));
    server.setMaxKeepAliveRequests(0);
}

void serveThreaded(const std::string& page, unsigned short port) {
    Varnex::ThreadedWebServer server;
    prepare(server, page);
    server.open("127.0.0.1", port);
    serve_until_term();
}

void servePolled(const std::string& page, unsigned short port) {
    Varnex::PolledWebServer server;
    prepare(server, page);
    server.open("127.0.0.1", port);
    std::atomic<bool> ends = false;
    std::thread loop([&] {
        while (!ends) {
            server.wait(-1);
            server.update();
        }
    });
    serve_until_term();
    ends = true;
    server.breakWait();
    loop.join();
}

}  // namespace

int main(int argc, char** argv) {
    Args args{argc, argv};
    guard(static_cast<unsigned>(args.num("max-seconds", 60)));
    block_term();
    const auto port = static_cast<unsigned short>(args.num("port", 8080));
    const std::string mode = args.get("mode", "thread"), text = page();
    if (mode != "thread" && mode != "polled") return 2;
    mode == "thread" ? serveThreaded(text, port) : servePolled(text, port);
}
