// The text is what a client sends to a web server with pages of every kind.

#include <Varnex/transport/Diagnostics.h>
#include <Varnex/web/PolledWebServer.h>
#include <Varnex/web/WebClient.h>
#include <Varnex/web/WebPageCallback.h>
#include <Varnex/web/WebPageDirectory.h>
#include <Varnex/web/WebPageFile.h>
#include <Varnex/web/WebPageFileSystem.h>
#include <Varnex/web/WebPageMetrics.h>
#include <Varnex/web/WebPageRedirection.h>
#include <Varnex/web/WebPageRoutes.h>
#include <Varnex/web/WebPageStatic.h>
#include <fuzz/HttpText.h>

#include <filesystem>
#include <fstream>

#include <stdlib.h>

using namespace Varnex;
using Request = ProtocolHTTP::Request;
using Reply = ProtocolHTTP::Reply;

namespace {

/// Delivers the text in pieces, and sometimes nothing; checks what is sent.
struct WebPeer : Fuzz::TextPeer {
    WebPeer(std::string_view sent, Fuzz::Sizes newSizes) : TextPeer(sent), sizes(newSizes) {}
    ~WebPeer() override { Fuzz::check(replies.empty() || replies.starts_with("HTTP/1.1 ")); }
    bool receive(void* data, int& n) override {
        n = static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(n), Fuzz::pieceSize(sizes, ++pieces) + 1));
        return TextPeer::receive(data, n);
    }
    using TextPeer::waitForData;
    int waitForData(int) override { return ++waits % 5 == 0 ? WaitTimedOut : WaitData; }
    using TextPeer::send;
    bool send(const void* data, int& n) override {
        replies.append(static_cast<const char*>(data), static_cast<std::size_t>(n));
        Fuzz::check(replies.find("outside") == std::string::npos);
        return true;
    }
    Fuzz::Sizes sizes;
    std::size_t pieces = 0, waits = 0;
    std::string replies;
};

/// A folder to serve, with a file beside it.
struct Folder {
    Folder() {
        Fuzz::check(::mkdtemp(path.data()) != nullptr);
        std::filesystem::create_directories(path + "/in/sub");
        std::ofstream(path + "/outside") << "outside";
        std::ofstream(path + "/in/a.html") << std::string(600, 'a');
    }
    ~Folder() { std::filesystem::remove_all(path); }
    std::string path = "/tmp/fuzzwebXXXXXX";
};

struct Server : PolledWebServer {
    using PolledWebServer::addClient;
};

bool echo(const Request& request, Reply& reply) {
    reply.phrase = reply.body = request.body;
    reply.header.setParam("X", request.uri);
    return !request.body.starts_with("no");
}

bool release(WebClient* client, const Request&, Reply&) {
    std::string unread;
    return client->releaseCommunicator(unread) != nullptr;
}

void addPages(WebServer& server) {
    static const Folder folder;
    WebPageDirectory files("/d/", folder.path + "/in");
    files.setListing(true);
    WebPageFileSystem confined("/f/", folder.path + "/in/");
    confined.setConfined(true);
    WebPageRoutes routes("/r");
    routes.add("GET", "/{id}/{*rest}", [](const Request&, const Plexa::ParamBag&, Reply&) { return true; });
    server.addPage("/d/*", files);
    server.addPage("/f/*", confined);
    server.addPage("/r/*", routes);
    server.addPage("/g", WebPageFile(folder.path + "/in/a.html"));
    server.addPage("/m", WebPageMetrics(server.getStatistics()));
    server.addPage("/s", WebPageStatic("static", 6, "text/plain"));
    server.addPage("/e?", WebPageRedirection("/s"));
    server.addPage("/c", WebPageCallback(&echo));
    server.addPage("/t", WebPageCallback(&release));
}

void checkInput(std::uint8_t choice, Fuzz::Sizes sizes, std::string_view input) {
    Server server;
    addPages(server);
    server.setMaxRequestBody(1000);
    if ((choice & 1) != 0) server.setLogSize(3);
    if ((choice & 2) != 0) server.setUser("u");
    server.addClient(new WebPeer(input, sizes));
    for (int turn = 0; turn < 10000 && server.getClientCount() > 0; ++turn) server.update();
    Fuzz::check(server.getClientCount() == 0);
    Reply log;
    server.createLogPage({}, log);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    setDiagnosticSink([](DiagnosticStream, std::string_view) {});
    return Fuzz::run(data, size, checkInput);
}
