#pragma once

#include <Varnex/hub/WhiteboardClient.h>
#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/transport/Server.h>
#include <Varnex/web/WebAccess.h>
#include <Varnex/web/WebLimits.h>

#include <atomic>
#include <memory>
#include <string>
#include <utility>

namespace Varnex {

class Communicator;
class HtmlLog;
class PageRegistry;
class TlsContext;
class WebClient;
class WebPage;
class WebStatistics;

/// A web server: finds the page that a request names, has it fill in the reply, and sends that. How connections are
/// accepted and driven is for its two kinds, `ThreadedWebServer` and `PolledWebServer`.
///
/// Pages and the log are for any thread, at any time. Settings are made while it is closed. A subclass that overrides
/// an operation closes in its own destructor.
class VARNEX_API WebServer : public Server {
public:
    using Limits = WebLimits;

    /// What the steps of serving return.
    enum Step {
        StepClose = 0,
        StepOpen = 1,       ///< a request was answered, and the connection stays open
        StepTakenOver = 2,  ///< a page has taken the connection over
        StepTimedOut = 3    ///< there is nothing to do yet
    };

    WebServer();
    virtual ~WebServer();

    /// Stores a clone under an exact path, or under a pattern of fnmatch(3) if there is a "*" or "?" in it that does
    /// not follow a backslash. Replaces an earlier page of the same text.
    void addPage(const std::string& path, const WebPage& page);
    void removePage(const std::string& path);
    [[nodiscard]] static bool hasWildcards(const std::string& s);

    /// Begins to serve at `host` and `port`, as `Server::open` listens, closing an earlier one. Throws what that
    /// throws.
    virtual void open(const std::string& host, unsigned short port) = 0;

    /// Accepts nobody any more, gives the requests that are being served `milliseconds` to end, and closes all
    /// connections, idle ones at once.
    virtual void close(int milliseconds) = 0;
    /// Takes the server out of the registry, unless told otherwise, and stops listening. The kinds end all clients
    /// first. Throws `IOException` when the system reports a failure; closed all the same.
    virtual void close();

    /// Finds and runs a page. One of `Step`; 0 where the page makes no reply.
    virtual int dispatch(WebClient* client, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply);
    /// Answers one request. One of `Step`.
    virtual int handleRequest(WebClient& client, ProtocolHTTP::Request& request);
    /// Waits at most `timeout` milliseconds, -1 without limit, for a request, receives and answers it. One of `Step`.
    virtual int handleClient(WebClient& client, int timeout);

    virtual void createErrorPage(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply, unsigned long code);
    /// The entries of the log, the oldest first.
    void createLogPage(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply);
    /// Adds an entry, which is markup.
    void addLog(const std::string& entry);
    /// Drops all entries; 0, as at first: logging is off.
    void setLogSize(int entries);
    /// Called for each reply; empty, the default: nobody.
    void setAccessLog(WebAccessLog log) { accessLog_ = std::move(log); }
    /// Lives as long as anybody holds it.
    [[nodiscard]] std::shared_ptr<const WebStatistics> getStatistics() const { return statistics_; }

    void setLimits(const Limits& limits) { limits_ = limits; }
    [[nodiscard]] const Limits& getLimits() const { return limits_; }
    void setMaxClients(int clients) { limits_.maxClients = clients; }
    void setRequestTimeout(int seconds) { limits_.requestTimeout = seconds; }
    void setMaxKeepAliveRequests(int requests) { limits_.maxKeepAliveRequests = requests; }
    void setKeepAliveTimeout(int seconds) { limits_.keepAliveTimeout = seconds; }
    void setReceiveTimeout(int seconds) { limits_.receiveTimeout = seconds; }
    void setSendTimeout(int seconds) { limits_.sendTimeout = seconds; }
    void setMaxRequestHead(unsigned long bytes) { limits_.maxHead = bytes; }
    void setMaxRequestBody(unsigned long bytes) { limits_.maxBody = bytes; }

    /// Asks for basic authorization unless both are empty, as they are at first.
    void setUser(const std::string& user) { user_ = user; }
    void setPassword(const std::string& password) { password_ = password; }
    /// What a browser shows when it asks for them.
    void setRealm(const std::string& realm) { realm_ = realm; }
    /// Encrypts all connections, with TLS 1.2 or later: files, in PEM form, of the certificate with its chain and of
    /// its key. Throws `Exception` when they do not do.
    void setTLS(const std::string& certificate, const std::string& key);
    /// Whether the longest of the patterns that match is taken, as at first, or the first of them.
    void setLongestMatch(bool on) { longestMatch_ = on; }
    /// For the registry.
    void setName(const std::string& name) { name_ = name; }
    [[nodiscard]] const std::string& getName() const { return name_; }

    [[nodiscard]] WhiteboardClient& getWhiteboard() { return whiteboard_; }
    /// Whether `close` takes the server out of the registry, as at first.
    void setDeregisters(bool on) { deregisters_ = on; }

    /// Seconds since 1970, by the clock of the system.
    [[nodiscard]] static double getSystemTime();

protected:
    /// A connection that is to be served; its owner is the server then.
    virtual bool addClient(Communicator* communicator) = 0;
    /// A connection that ends, before it is closed. Must not call back.
    virtual void removeClient(Communicator* communicator);

    /// Accepts a connection and makes it ready for use; null when it broke at once.
    [[nodiscard]] std::unique_ptr<Communicator> acceptConnection(bool waits);
    /// Answers what could not be received as a request, with an ERROR line. Always 0.
    int refuse(WebClient& client, unsigned long code);
    void noteAccepted(const WebClient& client);
    void noteEnd(const WebClient& client);

    /// Requests that are answered from now on end their connections.
    void setClosing(bool on) { isClosing_ = on; }
    [[nodiscard]] bool isClosing() const { return isClosing_; }

private:
    friend class WebClient;
    using Request = ProtocolHTTP::Request;
    using Reply = ProtocolHTTP::Reply;

    struct Exchange;

    [[nodiscard]] bool prepareReply(Exchange& exchange);
    [[nodiscard]] bool isTooNew(Exchange& exchange) const;
    [[nodiscard]] bool hasOtherMethod(Exchange& exchange) const;
    [[nodiscard]] bool isTooLarge(Exchange& exchange) const;
    [[nodiscard]] bool isKeptAlive(Exchange& exchange) const;
    [[nodiscard]] int runPage(Exchange& exchange);
    void complete(Exchange& exchange) const;
    [[nodiscard]] bool send(Exchange& exchange);
    void note(const Exchange& exchange) const;
    [[nodiscard]] int receiveAndHandle(WebClient& client);

    std::string name_;
    std::string realm_;
    std::string user_;
    std::string password_;
    Limits limits_;
    std::unique_ptr<PageRegistry> pages_;
    bool longestMatch_ = true;
    std::unique_ptr<HtmlLog> log_;
    WhiteboardClient whiteboard_;
    bool deregisters_ = true;

    std::unique_ptr<TlsContext> tls_;
    WebAccessLog accessLog_;
    std::shared_ptr<WebStatistics> statistics_;
    std::atomic<bool> isClosing_ = false;
};

}  // namespace Varnex
