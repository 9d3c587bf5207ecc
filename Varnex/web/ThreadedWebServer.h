#pragma once

#include <Varnex/transport/AcceptPause.h>
#include <Varnex/web/WebServer.h>

#include <Zendro/Mutex.h>
#include <Zendro/ObjectThread.h>
#include <Zendro/Semaphore.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>

namespace Varnex {

/// A web server with a thread that accepts connections, and one for each connection, on which its pages run.
class VARNEX_API ThreadedWebServer : public WebServer {
public:
    class Client;

    ThreadedWebServer();
    /// Closes.
    ~ThreadedWebServer() override;

    void open(const std::string& host, unsigned short port) override;
    /// Waits for all pages that are running. Not to be called by one.
    void close() override { close(0); }
    void close(int milliseconds) override;

    /// Bytes of the stack of each connection's thread, on which its pages run; 0: the system's default. Threads with
    /// small ones start faster. For connections that come later.
    void setStackSize(std::size_t bytes) { stackSize_ = bytes; }
    static constexpr std::size_t kDefaultStackSize = 1UL << 20U;

    /// Connections that are being served.
    [[nodiscard]] int getClientCount() const VARNEX_EXCLUDES(mutex_);

protected:
    /// Owns the connection, also when there is no thread for it: false.
    bool addClient(Communicator* communicator) override VARNEX_EXCLUDES(mutex_);

private:
    using Clients = std::list<std::unique_ptr<Client>>;

    int acceptThread();
    [[nodiscard]] bool acceptOne(bool& hasPlace);
    void stopAccepting();
    void endClients(int milliseconds) VARNEX_EXCLUDES(mutex_);
    void ended(Client& client) VARNEX_EXCLUDES(mutex_);
    void collectFinished() VARNEX_REQUIRES(mutex_);

    mutable Zendro::Mutex mutex_;
    Clients active_ VARNEX_GUARDED_BY(mutex_);
    Clients finished_ VARNEX_GUARDED_BY(mutex_);  // their threads have ended, or are about to
    std::condition_variable_any oneEnded_;
    std::unique_ptr<Zendro::Semaphore> places_;
    std::unique_ptr<Zendro::ObjectThread<ThreadedWebServer>> thread_;
    AcceptPause pause_;
    std::atomic<std::size_t> stackSize_ = kDefaultStackSize;
};

}  // namespace Varnex
