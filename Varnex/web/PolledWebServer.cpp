#include <Varnex/web/PolledWebServer.h>

#include <Varnex/transport/IOException.h>
#include <Varnex/transport/PollReadable.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/web/RequestReceiver.h>
#include <Varnex/web/WebClient.h>
#include <Varnex/web/WebConnection.h>

#include <algorithm>
#include <utility>

namespace Varnex {

namespace {

constexpr int kTurnMs = 1000;  // how often time limits are looked at

using Clock = std::chrono::steady_clock;

bool hasPassed(Clock::time_point since, int seconds) {
    return seconds > 0 && Clock::now() - since > std::chrono::seconds(seconds);
}

}  // namespace

/// A connection between the updates.
class PolledWebServer::Client : public WebClient {
public:
    Client(PolledWebServer& server, std::unique_ptr<Communicator> newCommunicator, double now)
        : WebClient(server, std::move(newCommunicator), false),
          connection(dynamic_cast<WebConnection*>(getCommunicator())),
          lastTime(now) {}

    using WebClient::end;
    using WebClient::getReceiver;

    [[nodiscard]] bool hasQueued() const { return connection != nullptr && connection->hasQueued(); }

    WebConnection* const connection;  // null: of another kind, which is asked at each update
    bool keepsAlive = false;
    double lastTime;        // of the last request, or of the beginning; 0: no limit
    bool isEnding = false;  // as soon as everything is sent
    Clock::time_point lastProgress = Clock::now();
};

PolledWebServer::PolledWebServer() = default;

PolledWebServer::~PolledWebServer() {
    try {
        PolledWebServer::close(0);
    } catch (const IOException& failure) {
        printError(std::string("ERROR: ") + failure.what());
    }
}

void PolledWebServer::open(const std::string& host, unsigned short port) {
    close(0);
    if (!wakeUp_.open()) throw IOException("Cannot create pipe");
    Server::open(host, port);
    setClosing(false);
    acceptAgain_ = {};
}

void PolledWebServer::close(int milliseconds) {
    const auto end = Clock::now() + std::chrono::milliseconds(std::max(milliseconds, 0));
    setClosing(true);
    update();
    const auto isBusy = [](const auto& client) { return client->hasQueued() || client->getReceiver().isBusy(); };
    while (Clock::now() < end && std::any_of(active_.begin(), active_.end(), isBusy)) {
        wait(static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count()));
        update();
    }
    for (auto client = active_.begin(); client != active_.end();) client = remove(client);
    WebServer::close();
}

void PolledWebServer::update() {
    const double now = getSystemTime();
    if (!isPolled_) poll(0);
    isPolled_ = false;
    for (auto client = active_.begin(); client != active_.end();)
        client = updateClient(now, client) ? std::next(client) : remove(client);
    if (isConnectionWaiting_) updateServer();
}

bool PolledWebServer::updateClient(double now, Clients::iterator position) {
    Client& client = **position;
    bool progress = false;
    if (client.hasQueued() && !client.connection->sendQueued(progress)) return false;
    int step = client.isEnding ? StepClose : StepOpen;
    while (step == StepOpen && !client.hasQueued()) {
        step = handleClient(client, 0);
        if (step != StepOpen) break;
        client.keepsAlive = true;
        client.lastTime = now;
        progress = true;
    }
    if (client.isReleased()) return false;
    if (step == StepTakenOver) client.lastTime = 0;
    if (progress) client.lastProgress = Clock::now();
    if (step == StepTimedOut && client.getReceiver().isBusy() &&
        hasPassed(client.getReceiver().getBegin(), getLimits().receiveTimeout))
        step = refuse(client, 408);
    if (step == StepClose) client.isEnding = true;
    return client.isEnding ? client.hasQueued() && hasTimeLeft(client, now) : hasTimeLeft(client, now);
}

bool PolledWebServer::hasTimeLeft(const Client& client, double now) const {
    const Limits& limits = getLimits();
    if (client.hasQueued()) return !hasPassed(client.lastProgress, limits.sendTimeout);
    if (client.lastTime == 0 || client.getReceiver().isBusy()) return true;
    const int limit = client.keepsAlive ? limits.keepAliveTimeout : limits.requestTimeout;
    return limit <= 0 || now - client.lastTime <= limit;
}

PolledWebServer::Clients::iterator PolledWebServer::remove(Clients::iterator position) {
    Client& client = **position;
    noteEnd(client);
    if (!client.isReleased()) removeClient(client.getCommunicator());
    client.end();
    return active_.erase(position);
}

void PolledWebServer::updateServer() {
    isConnectionWaiting_ = false;
    while (mayAccept() && acceptOne()) {
    }
}

bool PolledWebServer::mayAccept() const {
    return isOpen() && !isClosing() && getClientCount() < getLimits().maxClients && Clock::now() >= acceptAgain_;
}

/// False: no connection is waiting, or it cannot be accepted now.
bool PolledWebServer::acceptOne() try {
    if (!isClientWaiting()) return false;
    auto connection = acceptConnection(false);
    pause_.succeeded();
    return addClient(connection.release());
} catch (const IOException& failure) {
    if (pause_.isPassing(failure)) acceptAgain_ = Clock::now() + AcceptPause::kPause;
    return false;
} catch (...) {
    printCaughtException();
    return true;
}

bool PolledWebServer::addClient(Communicator* communicator) {
    std::unique_ptr<Communicator> owner(communicator);
    active_.push_back(std::make_unique<Client>(*this, std::move(owner), getSystemTime()));
    noteAccepted(*active_.back());
    return true;
}

bool PolledWebServer::wait(int ms) {
    return poll(limited(ms)) > 0;
}

/// As long as nothing else has to be looked at.
int PolledWebServer::limited(int ms) const {
    const auto isDue = [](const auto& client) {
        return client->connection == nullptr || (!client->hasQueued() && client->connection->hasPending());
    };
    if (std::any_of(active_.begin(), active_.end(), isDue)) return 0;
    const int turn = Clock::now() < acceptAgain_ ? static_cast<int>(AcceptPause::kPause.count()) : kTurnMs;
    return ms < 0 ? turn : std::min(ms, turn);
}

int PolledWebServer::poll(int ms) {
    addDescriptors();
    const int ready = pollDescriptors(descriptors_, ms);
    if (ready > 0) noteReady();
    isPolled_ = true;
    return ready;
}

/// Those of the clients, the wake-up, and, where there is a place, the listening one.
void PolledWebServer::addDescriptors() {
    descriptors_.clear();
    polled_.clear();
    for (const auto& client : active_) {
        if (client->connection == nullptr) continue;
        const short events = client->hasQueued() ? POLLOUT : POLLIN;
        descriptors_.push_back({client->connection->getDescriptor(), events, 0});
        polled_.push_back(client.get());
    }
    if (wakeUp_.open()) descriptors_.push_back({wakeUp_.readEnd(), POLLIN, 0});
    if (mayAccept()) descriptors_.push_back({getDescriptor(), POLLIN, 0});
}

void PolledWebServer::noteReady() {
    for (std::size_t i = 0; i < polled_.size(); ++i)
        if (descriptors_[i].revents != 0) polled_[i]->connection->setReadable();
    for (std::size_t i = polled_.size(); i < descriptors_.size(); ++i) {
        if (descriptors_[i].revents == 0) continue;
        if (descriptors_[i].fd == wakeUp_.readEnd())
            wakeUp_.consume();
        else
            isConnectionWaiting_ = true;
    }
}

void PolledWebServer::breakWait() {
    if (!wakeUp_.open() || !wakeUp_.wake()) printError("ERROR: Cannot set event");
}

}  // namespace Varnex
