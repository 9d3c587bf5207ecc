#include <Varnex/web/WebServer.h>

#include <Varnex/streams/ioStream.h>
#include <Varnex/transport/LowerCase.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/web/HtmlLog.h>
#include <Varnex/web/ReplyHead.h>
#include <Varnex/web/RequestReceiver.h>
#include <Varnex/web/WebClient.h>
#include <Varnex/web/WebConnection.h>
#include <Varnex/web/WebStatistics.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string_view>
#include <utility>

namespace Varnex {

namespace {

constexpr std::string_view kMethods = "GET, HEAD, POST, OPTIONS, DELETE";
constexpr std::array<std::string_view, 5> kMethodNames = {"GET", "HEAD", "POST", "OPTIONS", "DELETE"};

constexpr unsigned long kSwitchingProtocols = 101;
constexpr unsigned long kNotModified = 304;

using Clock = std::chrono::steady_clock;

/// The rest of a file that goes to a connection of any kind.
bool sendFile(WebClient& client, FileBody body) {
    if (auto* const connection = dynamic_cast<WebConnection*>(client.getCommunicator()))
        return connection->send(std::move(body));
    std::string block(WebConnection::kFileBlock, '\0');
    for (;;) {
        const long n = body.read(block.data(), block.size());
        if (n <= 0) return n == 0;
        if (!client.getProtocol().sendBody(block.data(), static_cast<int>(n))) return false;
    }
}

}  // namespace

/// A request, and what becomes of it.
struct WebServer::Exchange {
    WebClient& client;
    Request& request;
    Reply& reply;
    Clock::time_point begin = Clock::now();
    bool keepsAlive = false;
    int result = StepOpen;
    unsigned long long bodySize = 0;
};

int WebServer::handleRequest(WebClient& client, ProtocolHTTP::Request& request) {
    if (log_->isOn()) log_->addRequest(client.getPeer(), request);
    Exchange exchange{client, request, client.reply_};
    ReplyHead::reset(exchange.reply);
    client.file_.reset();
    client.isKept_ = false;
    if (!prepareReply(exchange)) return exchange.result;
    if (client.isReleased()) return StepTakenOver;
    complete(exchange);
    if (log_->isOn()) log_->addReply(exchange.reply);
    const bool isSent = send(exchange);
    note(exchange);
    if (!isSent) {
        printError("ERROR: WebServer: Cannot send reply.");
        return StepClose;
    }
    if (exchange.result == StepTakenOver) return StepTakenOver;
    return exchange.keepsAlive ? exchange.result : StepClose;
}

/// False: nothing is to be sent.
bool WebServer::prepareReply(Exchange& exchange) {
    auto& [client, request, reply, begin, keepsAlive, result, bodySize] = exchange;
    client.hasUnreadBody_ = isTooNew(exchange) || hasOtherMethod(exchange) || isTooLarge(exchange);
    if (client.hasUnreadBody_) return true;
    if (request.method != "POST") request.body.clear();
    if (!client.receiver_->receiveBody(request)) {
        printError("ERROR: WebServer: Cannot receive body.");
        result = StepClose;
        return false;
    }
    ++client.requests_;
    keepsAlive = isKeptAlive(exchange);
    if (!ProtocolHTTP::checkAuthorization(request.header, user_, password_)) {
        reply.code = 401;
        reply.header.setParam("WWW-Authenticate", "Basic realm=" + ReplyHead::quoted(realm_));
        return true;
    }
    client.receiver_->reset();
    result = runPage(exchange);
    return result == StepOpen || result == StepTakenOver;
}

bool WebServer::isTooNew(Exchange& exchange) const {
    if (exchange.request.version.major < 2) return false;
    exchange.reply.code = 505;
    return true;
}

bool WebServer::hasOtherMethod(Exchange& exchange) const {
    const std::string& method = exchange.request.method;
    if (std::find(kMethodNames.begin(), kMethodNames.end(), method) != kMethodNames.end()) return false;
    exchange.reply.code = 405;
    exchange.reply.header.setParam("Allow", kMethods);
    return true;
}

bool WebServer::isTooLarge(Exchange& exchange) const {
    if (limits_.maxBody == 0 || RequestReceiver::bodyLength(exchange.request) <= limits_.maxBody) return false;
    exchange.reply.code = 413;
    return true;
}

bool WebServer::isKeptAlive(Exchange& exchange) const {
    const ProtocolHTTP::Version& version = exchange.request.version;
    const int limit = limits_.maxKeepAliveRequests;
    if (limit > 0 && exchange.client.requests_ > limit - 1) return false;
    if (version.major == 0 || isClosing() || exchange.client.receiver_->isAmbiguous(exchange.request)) return false;
    std::string connection = exchange.request.header.getParam("Connection");
    makeLowerCase(connection);
    return version.minor == 0 ? connection == "keep-alive" : connection != "close";
}

/// A page that throws costs its own connection alone.
int WebServer::runPage(Exchange& exchange) try {
    return dispatch(&exchange.client, exchange.request, exchange.reply);
} catch (...) {
    printCaughtException();
    if (exchange.client.isReleased()) return StepTakenOver;
    ReplyHead::reset(exchange.reply);
    exchange.client.file_.reset();
    createErrorPage(exchange.request, exchange.reply, 500);
    exchange.keepsAlive = false;
    return StepOpen;
}

void WebServer::complete(Exchange& exchange) const {
    auto& [client, request, reply, begin, keepsAlive, result, bodySize] = exchange;
    keepsAlive = keepsAlive && !isClosing();
    if (reply.phrase.empty()) reply.phrase = ReplyHead::phraseOf(reply.code);
    ReplyHead::neutralise(reply);
    const bool isSwitching = reply.code == kSwitchingProtocols && result == StepTakenOver;
    bodySize = client.file_ ? static_cast<unsigned long long>(client.file_->length) : reply.body.size();
    if (!isSwitching) reply.header.setParam("Content-Length", std::to_string(bodySize));
    reply.header.setParam("Date", ReplyHead::date());
    if (!isSwitching) reply.header.setParam("Connection", keepsAlive ? "Keep-Alive" : "close");
    if (request.method != "HEAD" && reply.code != kNotModified) return;
    reply.body.clear();
    client.file_.reset();
    bodySize = 0;
}

bool WebServer::send(Exchange& exchange) {
    WebClient& client = exchange.client;
    if (!client.protocol_.sendReply(exchange.reply)) return false;
    return !client.file_ || sendFile(client, std::exchange(client.file_, std::nullopt).value());
}

void WebServer::note(const Exchange& exchange) const {
    const auto& [client, request, reply, begin, keepsAlive, result, bodySize] = exchange;
    const auto duration = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    statistics_->addReply(reply.code, bodySize, duration);
    if (!accessLog_) return;
    const ProtocolHTTP::Version& version = request.version;
    accessLog_({client.getPeer(), request.method, request.uri,
                version.name + "/" + std::to_string(version.major) + "." + std::to_string(version.minor), reply.code,
                bodySize, duration});
}

/// Answers what could not be received as a request.
int WebServer::refuse(WebClient& client, unsigned long code) {
    const bool hasHead = client.receiver_->hasHead();
    printError(hasHead ? "ERROR: WebServer: Cannot receive body." : "ERROR: WebServer: Cannot receive request.");
    ++statistics_->refused;
    client.protocol_.getStream()->clear();
    client.receiver_->reset();
    client.hasUnreadBody_ = true;
    Request none;
    Exchange exchange{client, none, client.reply_};
    ReplyHead::reset(exchange.reply);
    createErrorPage(none, exchange.reply, code);
    complete(exchange);
    static_cast<void>(send(exchange));
    return StepClose;
}

}  // namespace Varnex
