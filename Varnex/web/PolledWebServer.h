#pragma once

#include <Varnex/transport/AcceptPause.h>
#include <Varnex/transport/WakeUpPipe.h>
#include <Varnex/web/WebServer.h>

#include <chrono>
#include <list>
#include <memory>
#include <vector>

struct pollfd;

namespace Varnex {

class WebConnection;

/// A web server without threads: the application calls `update` again and again, which serves what can be served
/// without waiting. A slow client delays nobody; a slow page does. One thread, but `breakWait` is for any.
class VARNEX_API PolledWebServer : public WebServer {
public:
    class Client;

    PolledWebServer();
    /// Closes.
    ~PolledWebServer() override;

    void open(const std::string& host, unsigned short port) override;
    void close() override { close(0); }
    /// Goes on updating for as long as requests are being served.
    void close(int milliseconds) override;

    /// Answers all requests that are there, sends what waits to be sent, ends the connections whose time is over, and
    /// accepts new ones.
    void update();
    /// Accepts connections as long as some wait and there is a place.
    void updateServer();

    /// Sleeps until `update` has something to do, at most `ms` milliseconds, -1 without limit. False: the time ran out,
    /// or `breakWait` ended it.
    bool wait(int ms);
    /// Ends one wait, the present or the next.
    void breakWait();

    /// Connections that are being served.
    [[nodiscard]] int getClientCount() const { return static_cast<int>(active_.size()); }

protected:
    using Clients = std::list<std::unique_ptr<Client>>;

    bool addClient(Communicator* communicator) override;
    /// One client's part of `update`. False: it is to be removed.
    virtual bool updateClient(double now, Clients::iterator position);

private:
    using Clock = std::chrono::steady_clock;

    int poll(int ms);
    void addDescriptors();
    void noteReady();
    [[nodiscard]] int limited(int ms) const;
    [[nodiscard]] bool mayAccept() const;
    [[nodiscard]] bool hasTimeLeft(const Client& client, double now) const;
    [[nodiscard]] bool acceptOne();
    Clients::iterator remove(Clients::iterator position);

    Clients active_;
    std::vector<pollfd> descriptors_;
    std::vector<Client*> polled_;  // the clients of the first of them
    bool isPolled_ = false;        // since the last update
    bool isConnectionWaiting_ = false;
    WakeUpPipe wakeUp_;
    AcceptPause pause_;
    Clock::time_point acceptAgain_;
};

}  // namespace Varnex
