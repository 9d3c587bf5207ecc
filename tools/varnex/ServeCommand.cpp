#include "Command.h"
#include "Endpoint.h"
#include "EventLog.h"
#include "Failure.h"
#include "Quote.h"
#include "StopWatcher.h"

#include <Varnex/transport/IOException.h>
#include <Varnex/web/PolledWebServer.h>
#include <Varnex/web/ThreadedWebServer.h>
#include <Varnex/web/WebPageDirectory.h>

#include <chrono>
#include <memory>

namespace VarnexTool {

namespace {

constexpr int kGraceMs = 1000;

class ServeCommand : public Command {
public:
    explicit ServeCommand(CLI::App& parent);
    void run() override;

private:
    void prepare(Varnex::WebServer& server) const;
    void open(Varnex::WebServer& server) const;

    std::string folder_;
    std::string host_ = "127.0.0.1";
    unsigned short port_ = 8080;
    bool polled_ = false;
    std::string user_;
    std::string password_;
    std::vector<std::string> tls_;
    bool listing_ = false;
    bool log_ = false;
};

ServeCommand::ServeCommand(CLI::App& parent)
    : Command(parent, "serve", "Show the files of a folder to browsers: a web server with careful limits") {
    app()
        .add_option("DIR", folder_, "The folder; nothing outside it is served, nor names that begin with \".\"")
        ->required();
    app().add_option("--port", port_, "The port to listen at; 0: the system chooses one")->capture_default_str();
    app()
        .add_option("--host", host_, "The address to listen at; 0.0.0.0 or :: for all of this machine")
        ->capture_default_str();
    app().add_flag("--polled", polled_, "Serve all clients on one thread");
    CLI::Option* const user = app().add_option("--user", user_, "Ask for this name");
    CLI::Option* const password = app().add_option(
        "--password", password_,
        "and for this password; both are visible to who lists the processes, and without --tls on the wire");
    user->needs(password);
    password->needs(user);
    app()
        .add_option("--tls", tls_, "Speak HTTPS, with the certificate and the key in these PEM files")
        ->type_name("CERT KEY")
        ->expected(2);
    app().add_flag("--listing", listing_, "Show what is in a folder without an index.html");
    app().add_flag("--log", log_, "Print a line for each request");
}

/// In the common log format, but for the time.
void print(const Varnex::WebAccess& access) {
    EventLog::note(access.peer + " \"" + access.method + " " + access.uri + " " + access.version + "\" " +
                   std::to_string(access.code) + " " + std::to_string(access.bytes) + " " +
                   std::to_string(access.duration.count()) + " us");
}

void ServeCommand::prepare(Varnex::WebServer& server) const {
    server.setLimits(Varnex::WebServer::Limits::hardened());
    server.setPortSharing(false);
    server.setRealm("varnex");
    server.setUser(user_);
    server.setPassword(password_);
    if (!tls_.empty()) server.setTLS(tls_[0], tls_[1]);
    if (log_) server.setAccessLog(&print);
    Varnex::WebPageDirectory folder("/", folder_);
    folder.setListing(listing_);
    server.addPage("/*", folder);
}

void ServeCommand::open(Varnex::WebServer& server) const {
    try {
        server.open(host_, port_);
    } catch (const Varnex::IOException& error) {
        throw Failure(host_ + ":" + std::to_string(port_) + ": " + error.what() +
                      "; is the port taken or below 1024, or is the address not of this machine?");
    }
    EventLog::note(std::string("serving ") + inQuotes(folder_) + " at http" + (tls_.empty() ? "" : "s") + "://" +
                   Endpoint::of(server.getLocalAddress()).text() + "/");
}

void ServeCommand::run() {
    if (polled_) {
        Varnex::PolledWebServer server;
        prepare(server);
        StopWatcher stop({}, [&server] { server.breakWait(); });
        open(server);
        while (!stop.isStopped()) {
            server.wait(-1);
            server.update();
        }
        server.close(kGraceMs);
    } else {
        Varnex::ThreadedWebServer server;
        prepare(server);
        const StopWatcher stop({});
        open(server);
        while (stop.sleepUntil(std::chrono::steady_clock::now() + std::chrono::hours(1))) {
        }
        server.close(kGraceMs);
    }
}

}  // namespace

std::unique_ptr<Command> makeServeCommand(CLI::App& parent) {
    return std::make_unique<ServeCommand>(parent);
}

}  // namespace VarnexTool
