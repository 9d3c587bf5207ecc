#pragma once

#include <Varnex/Export.h>
#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/web/FileBody.h>

#include <Zendro/Mutex.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace Varnex {

class Communicator;
class RequestReceiver;
class StreamBuf;
class WebServer;
class ioStream;

/// A web server's record of one connection. A page that gets it can take the connection over. For the thread that
/// serves the connection.
class VARNEX_API WebClient {
public:
    /// Owns the connection. `waits`: requests are waited for, otherwise they are collected as their bytes come.
    WebClient(WebServer& server, std::unique_ptr<Communicator> communicator, bool waits);
    WebClient(const WebClient&) = delete;
    WebClient& operator=(const WebClient&) = delete;
    virtual ~WebClient();

    [[nodiscard]] WebServer& getServer() const { return server_; }
    /// Null once it is released.
    [[nodiscard]] Communicator* getCommunicator() const { return communicator_.get(); }
    [[nodiscard]] ProtocolHTTP& getProtocol() { return protocol_; }
    /// Requests so far, this one among them.
    [[nodiscard]] int getRequestCount() const { return requests_; }
    /// Address and port of the other end.
    [[nodiscard]] std::string getPeer() const;

    /// Has the reply end with this instead of its body. For a page that makes one; `code` and header are as usual.
    void setFile(FileBody body) { file_ = std::move(body); }

    // Three ways to take the connection over. The page has sent what there is to send, or will, and returns true.

    /// The stream, with all that is unread in it, and with the connection, which it owns. The server sends nothing and
    /// forgets the connection; the caller owns the result.
    [[nodiscard]] ioStream* releaseStream();
    /// The connection without a stream; `unread` becomes what had been received already.
    [[nodiscard]] std::unique_ptr<Communicator> releaseCommunicator(std::string& unread);
    /// The reply is sent, and the connection stays open without a time limit, whatever the request said. What comes
    /// next goes to `WebServer::handleClient`, which can be overridden.
    void keepOpen() { isKept_ = true; }

    [[nodiscard]] bool isReleased() const { return protocol_.getStream() == nullptr; }
    [[nodiscard]] bool isTakenOver() const { return isKept_ || isReleased(); }

protected:
    friend class WebServer;

    /// Gives a peer that still sends the time to see its reply.
    void linger();
    /// Closes the connection.
    void end();

    [[nodiscard]] RequestReceiver& getReceiver() const { return *receiver_; }

    // For other threads.

    /// Ends the wait for the next request, if that is what the connection is at.
    void stop();
    /// Ends all that it is at.
    void abort();

private:
    [[nodiscard]] StreamBuf& getBuffer() const;
    [[nodiscard]] int waitForRequest(int timeout);

    WebServer& server_;
    std::unique_ptr<Communicator> communicator_;
    ProtocolHTTP protocol_;
    std::unique_ptr<RequestReceiver> receiver_;
    ProtocolHTTP::Reply reply_;
    std::optional<FileBody> file_;
    int requests_ = 0;
    bool isKept_ = false;
    bool hasUnreadBody_ = false;  // that the peer may still be sending

    Zendro::Mutex ending_;  // of what other threads use: the connection, unless it is gone
    std::atomic<bool> isWaiting_ = false;
    bool isGone_ VARNEX_GUARDED_BY(ending_) = false;
};

}  // namespace Varnex
