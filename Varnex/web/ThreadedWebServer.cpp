#include <Varnex/web/ThreadedWebServer.h>

#include <Varnex/transport/Communicator.h>
#include <Varnex/transport/IOException.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/web/WebClient.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace Varnex {

/// A connection with the thread that serves it.
class ThreadedWebServer::Client : public WebClient {
public:
    Client(ThreadedWebServer& server, std::unique_ptr<Communicator> communicator)
        : WebClient(server, std::move(communicator), true), server_(server), thread_(this, &Client::run) {}
    ~Client() override { thread_.join(); }

    using WebClient::abort;
    using WebClient::end;
    using WebClient::linger;
    using WebClient::stop;

    [[nodiscard]] bool start(std::size_t stackSize) {
        thread_.setStackSize(stackSize);
        return thread_.start();
    }

    Clients::iterator position;

private:
    int run();

    ThreadedWebServer& server_;
    Zendro::ObjectThread<Client> thread_;
};

int ThreadedWebServer::Client::run() {
    const auto limit = [](int seconds) { return seconds > 0 ? seconds * 1000 : -1; };
    int timeout = limit(server_.getLimits().requestTimeout);
    for (bool goesOn = true; goesOn && !isReleased();) {
        const int step = server_.handleClient(*this, timeout);
        timeout = step == StepTakenOver ? -1 : limit(server_.getLimits().keepAliveTimeout);
        goesOn = step == StepOpen || step == StepTakenOver;
    }
    server_.ended(*this);
    return 0;
}

ThreadedWebServer::ThreadedWebServer() = default;

ThreadedWebServer::~ThreadedWebServer() {
    try {
        ThreadedWebServer::close(0);
    } catch (const IOException& failure) {
        printError(std::string("ERROR: ") + failure.what());
    }
}

void ThreadedWebServer::open(const std::string& host, unsigned short port) {
    close(0);
    if (!pause_.open()) throw IOException("Cannot create pipe");
    Server::open(host, port);
    static_cast<void>(waitForClient(0));  // what the waits need is made now or never
    setClosing(false);
    places_ = std::make_unique<Zendro::Semaphore>(std::max(getLimits().maxClients, 1));
    thread_ = std::make_unique<Zendro::ObjectThread<ThreadedWebServer>>(this, &ThreadedWebServer::acceptThread);
    if (thread_->start()) return;
    thread_.reset();
    WebServer::close();
    throw IOException("Cannot start thread");
}

int ThreadedWebServer::acceptThread() {
    for (bool goesOn = true; goesOn;) {
        places_->down();
        bool hasPlace = true;
        while (goesOn && hasPlace) goesOn = acceptOne(hasPlace);
    }
    return 0;
}

/// `hasPlace` becomes false when a connection has taken the place. False: that was the end.
bool ThreadedWebServer::acceptOne(bool& hasPlace) try {
    if (isClosing() || waitForClient(-1) != WaitClient) return false;
    auto connection = acceptConnection(true);
    pause_.succeeded();
    hasPlace = !addClient(connection.release());
    return true;
} catch (const IOException& failure) {
    return pause_.pauseAfter(failure);
} catch (...) {
    printCaughtException();
    return true;
}

bool ThreadedWebServer::addClient(Communicator* communicator) {
    auto client = std::make_unique<Client>(*this, std::unique_ptr<Communicator>(communicator));
    const Zendro::MutexLock lock(mutex_);
    collectFinished();
    noteAccepted(*client);
    active_.push_front(std::move(client));
    active_.front()->position = active_.begin();
    if (active_.front()->start(stackSize_)) return true;
    printError("ERROR: Cannot start the thread of a client");
    noteEnd(*active_.front());
    active_.pop_front();
    return false;
}

void ThreadedWebServer::collectFinished() {
    finished_.clear();
}

/// On the client's own thread, as the last thing it does.
void ThreadedWebServer::ended(Client& client) {
    client.linger();
    client.end();
    {
        const Zendro::MutexLock lock(mutex_);
        noteEnd(client);
        finished_.splice(finished_.begin(), active_, client.position);
        if (!client.isReleased()) removeClient(client.getCommunicator());
        oneEnded_.notify_all();
    }
    places_->up();
}

int ThreadedWebServer::getClientCount() const {
    const Zendro::MutexLock lock(mutex_);
    return static_cast<int>(active_.size());
}

void ThreadedWebServer::close(int milliseconds) {
    setClosing(true);
    stopAccepting();
    endClients(milliseconds);
    WebServer::close();
}

void ThreadedWebServer::stopAccepting() {
    if (thread_ == nullptr) return;
    pause_.breakWait();
    breakWait();
    places_->up();
    thread_->join();
    thread_.reset();
    while (waitForClient(0) == WaitBroken) {
    }
}

void ThreadedWebServer::endClients(int milliseconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(std::max(milliseconds, 0));
    Clients finished;
    mutex_.lock();
    for (const auto& client : active_) client->stop();
    while (!active_.empty() && oneEnded_.wait_until(mutex_, end) != std::cv_status::timeout) {
    }
    for (const auto& client : active_) client->abort();
    while (!active_.empty()) oneEnded_.wait(mutex_);
    finished.swap(finished_);
    mutex_.unlock();
    finished.clear();  // which joins their threads
}

}  // namespace Varnex
