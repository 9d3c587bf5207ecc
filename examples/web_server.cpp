// web_server FOLDER [PORT]: a web server with a folder of files, a JSON interface, a form, a log and its figures.

#include <Varnex/transport/Exception.h>
#include <Varnex/web/ThreadedWebServer.h>
#include <Varnex/web/WebPageCallback.h>
#include <Varnex/web/WebPageDirectory.h>
#include <Varnex/web/WebPageMetrics.h>
#include <Varnex/web/WebPageRoutes.h>
#include <Varnex/web/WebPageStatic.h>
#include <Varnex/web/icons.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <mutex>

using Varnex::ProtocolHTTP;

namespace {

/// What the program has to tell. Pages run on many threads, so it has a lock.
class Points {
public:
    void set(const std::string& id, const std::string& value) {
        const std::lock_guard lock(mutex_);
        values_[id] = value;
    }
    [[nodiscard]] std::string json(const std::string& id) {
        const std::lock_guard lock(mutex_);
        const auto found = values_.find(id);
        return found == values_.end() ? "null" : std::to_string(std::atof(found->second.c_str()));
    }

private:
    std::mutex mutex_;
    std::map<std::string, std::string> values_;
};

Points points;

Varnex::WebPageRoutes makeInterface() {
    Varnex::WebPageRoutes routes("/api");
    routes.add("GET", "/points/{id}", [](const auto&, const Plexa::ParamBag& captures, ProtocolHTTP::Reply& reply) {
        reply.header.setParam("Content-Type", "application/json");
        reply.body = points.json(captures.getParam("id"));
        return true;
    });
    routes.add("POST", "/points/{id}", [](const auto& request, const Plexa::ParamBag& captures, auto& reply) {
        points.set(captures.getParam("id"), request.body);
        reply.code = 204;
        return true;
    });
    return routes;
}

/// What a browser sends for <form method="post">.
bool answerForm(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) {
    Plexa::ParamBag fields;
    ProtocolHTTP::parseQuery(request.body, fields);
    points.set("form", fields.getParam("value"));
    reply.code = 303;
    reply.header.setParam("Location", "/");
    return true;
}

void serve(const std::string& folder, unsigned short port) {
    Varnex::ThreadedWebServer server;
    server.setLimits(Varnex::WebServer::Limits::hardened());
    server.addPage("/*", Varnex::WebPageDirectory("/", folder));
    server.addPage("/api/*", makeInterface());
    server.addPage("/form", Varnex::WebPageCallback(&answerForm));
    server.addPage("/metrics", Varnex::WebPageMetrics(server.getStatistics()));
    server.addPage("/favicon.ico",
                   Varnex::WebPageStatic(Varnex::tarvolo16x16_ico, sizeof Varnex::tarvolo16x16_ico, "image/x-icon"));
    server.open("127.0.0.1", port);
    std::cout << "http://127.0.0.1:" << server.getLocalPort() << "/ (Enter ends it)" << std::endl;
    std::cin.get();
    server.close(1000);
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc < 2) {
        std::cerr << "usage: web_server FOLDER [PORT]\n";
        return 2;
    }
    serve(argv[1], static_cast<unsigned short>(argc > 2 ? std::atoi(argv[2]) : 8080));
    return 0;
} catch (const Varnex::Exception& error) {
    std::cerr << "web_server: " << error.what() << '\n';
    return 1;
}
