#include <Varnex/web/WebServer.h>

#include <Varnex/streams/ioStream.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/url/URLImpl.h>
#include <Varnex/web/HtmlLog.h>
#include <Varnex/web/HtmlText.h>
#include <Varnex/web/PageRegistry.h>
#include <Varnex/web/PlainWire.h>
#include <Varnex/web/ReplyHead.h>
#include <Varnex/web/RequestReceiver.h>
#include <Varnex/web/TlsContext.h>
#include <Varnex/web/WebClient.h>
#include <Varnex/web/WebConnection.h>
#include <Varnex/web/WebPage.h>
#include <Varnex/web/WebStatistics.h>

#include <ctime>
#include <utility>

namespace Varnex {

WebServer::WebServer()
    : pages_(std::make_unique<PageRegistry>()),
      log_(std::make_unique<HtmlLog>()),
      statistics_(std::make_shared<WebStatistics>()) {}

WebServer::~WebServer() = default;

void WebServer::addPage(const std::string& path, const WebPage& page) {
    pages_->add(path, std::shared_ptr<WebPage>(page.clone()));
}

void WebServer::removePage(const std::string& path) {
    pages_->remove(path);
}

bool WebServer::hasWildcards(const std::string& s) {
    return PageRegistry::hasWildcards(s);
}

void WebServer::close() {
    if (deregisters_) whiteboard_.removeServer();
    whiteboard_.close();
    Server::close();
}

void WebServer::setTLS(const std::string& certificate, const std::string& key) {
    tls_ = std::make_unique<TlsContext>(certificate, key);
}

int WebServer::dispatch(WebClient* client, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) {
    URLImpl::Components url;
    URLImpl::parseURL(request.uri, url);
    const std::shared_ptr<WebPage> page = pages_->find(url.path, longestMatch_);
    if (page == nullptr) {
        createErrorPage(request, reply, 404);
        return StepOpen;
    }
    if (!page->create(client, request, reply)) return StepClose;
    return client != nullptr && client->isTakenOver() ? StepTakenOver : StepOpen;
}

int WebServer::handleClient(WebClient& client, int timeout) {
    if (client.isReleased()) return StepTakenOver;
    StreamBuf& buffer = client.getBuffer();
    switch (client.waitForRequest(timeout)) {
        case Receiver::WaitData:
            break;
        case Receiver::WaitBroken:
            return StepClose;
        case Receiver::WaitTimedOut:
            return StepTimedOut;
        default:
            printError("ERROR: Webserver: Cannot wait for data.");
            return StepClose;
    }
    int count = 0;
    if (!buffer.dataAvail(count)) {
        printError("ERROR: Webserver: Cannot determine data available.");
        return StepClose;
    }
    return count == 0 ? StepClose : receiveAndHandle(client);
}

int WebServer::receiveAndHandle(WebClient& client) {
    using Result = RequestReceiver::Result;
    RequestReceiver& receiver = *client.receiver_;
    switch (receiver.receive()) {
        case Result::Complete:
            break;
        case Result::Incomplete:
            return StepTimedOut;
        case Result::TooLarge:
            return refuse(client, 431);
        case Result::TimedOut:
            return refuse(client, 408);
        case Result::NotHttp:
            printError("ERROR: WebServer: Got a non-HTTP request.");
            return StepClose;
        default:
            return refuse(client, 400);
    }
    const int step = handleRequest(client, receiver.getRequest());
    if (!client.isReleased()) receiver.reset();
    return step;
}

void WebServer::createErrorPage(const ProtocolHTTP::Request&, ProtocolHTTP::Reply& reply, unsigned long code) {
    const std::string phrase = ReplyHead::phraseOf(code);
    reply.code = code;
    reply.header.setParam("Content-Type", "text/html");
    reply.body = htmlPage(std::to_string(code) + (phrase.empty() ? "" : " ") + phrase);
}

void WebServer::createLogPage(const ProtocolHTTP::Request&, ProtocolHTTP::Reply& reply) {
    reply.code = 200;
    reply.header.setParam("Content-Type", "text/html");
    reply.body = log_->createPage();
}

void WebServer::addLog(const std::string& entry) {
    log_->add(entry);
}

void WebServer::setLogSize(int entries) {
    log_->setSize(entries);
}

double WebServer::getSystemTime() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void WebServer::removeClient(Communicator*) {}

std::unique_ptr<Communicator> WebServer::acceptConnection(bool waits) {
    std::unique_ptr<Varnex::Client> socket(getClient());
    socket->setTcpNoDelay(true);
    std::unique_ptr<Wire> wire;
    if (tls_ != nullptr)
        wire = tls_->accept(socket->getDescriptor());
    else
        wire = std::make_unique<PlainWire>(socket->getDescriptor());
    const int sendMs = limits_.sendTimeout > 0 ? limits_.sendTimeout * 1000 : -1;
    return std::make_unique<WebConnection>(std::move(socket), std::move(wire),
                                           waits ? WebConnection::Sending::Waits : WebConnection::Sending::Queues,
                                           sendMs);
}

void WebServer::noteAccepted(const WebClient& client) {
    ++statistics_->accepted;
    ++statistics_->active;
    if (!log_->isOn()) return;
    const std::string local = isOpen() ? getLocalAddress().toString() : "";
    log_->add("<P>Accepted client " + client.getPeer() + " on " + local + "</P>\n");
}

void WebServer::noteEnd(const WebClient& client) {
    --statistics_->active;
    if (log_->isOn()) log_->add("<P>Disconnected from client " + client.getPeer() + "</P>\n");
}

}  // namespace Varnex
