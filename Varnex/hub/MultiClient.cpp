#include <Varnex/hub/MultiClient.h>

#include <Varnex/events/ServerInfoQueryEvent.h>
#include <Varnex/hub/DatagramEvent.h>
#include <Varnex/hub/Dialler.h>
#include <Varnex/hub/Discovery.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Exception.h>
#include <Varnex/transport/PrintLine.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>

namespace Varnex {

namespace {

constexpr int kQueryAgainMs = 1000;

std::string keyOf(const std::string& host, unsigned short port) {
    return host + ':' + std::to_string(port);
}

bool isNumeric(const std::string& host) {
    in6_addr ignored;
    return ::inet_pton(AF_INET, host.c_str(), &ignored) == 1 || ::inet_pton(AF_INET6, host.c_str(), &ignored) == 1;
}

bool isLoopback(const std::string& host) {
    return host.starts_with("127.") || host == "::1";
}

/// Marks the present thread's dials as the hub's own while it lives.
class HubsOwnDial {
public:
    HubsOwnDial() { underWay_ = true; }
    ~HubsOwnDial() { underWay_ = false; }
    HubsOwnDial(const HubsOwnDial&) = delete;
    HubsOwnDial& operator=(const HubsOwnDial&) = delete;

    static bool isUnderWay() { return underWay_; }

private:
    static inline thread_local bool underWay_ = false;
};

bool opens(Client& client, const SocketAddress& address) {
    try {
        client.open(address);
        return true;
    } catch (const Exception&) {
        return false;
    }
}

}  // namespace

/// One connection attempt, from `beginDial` on.
class MultiClient::Dial {
public:
    explicit Dial(MultiClient& hub) : hub_(hub) {}
    ~Dial() { hub_.endDial(); }
    Dial(const Dial&) = delete;
    Dial& operator=(const Dial&) = delete;

private:
    MultiClient& hub_;
};

MultiClient::MultiClient(long mask) : mask_(mask) {
    dialler_ = std::make_unique<Dialler>(
        [this](const std::string& host, unsigned short port) {
            const HubsOwnDial own;
            return connectToServer(host, port);
        },
        [this](const std::string& host, unsigned short port) { giveUp(host, port); }, kDefaultMaxServers);
    prepareDiscovery(multicast_);
    setDetachedHook([this](Communicator* connection) { forget(connection, true); });
}

MultiClient::~MultiClient() {
    MultiClient::close();
}

bool MultiClient::open() {
    close();
    if (!MultiCommunicator::open()) return false;
    if (!multicast_.open()) return true;
    dialler_->allow();
    discoveryThread_ = std::make_unique<Zendro::ObjectThread<MultiClient>>(this, &MultiClient::connectThread);
    if (!discoveryThread_->start()) discoveryThread_.reset();
    return true;
}

bool MultiClient::close() {
    stopDialling();
    const bool multicastClosed = multicast_.close();
    const bool closed = MultiCommunicator::close();
    const Zendro::MutexLock lock(connectionsMutex_);
    closing_ = false;
    return closed && multicastClosed;
}

/// Breaks off what is under way, refuses what begins from now on, and forgets which connection is whose.
void MultiClient::stopDialling() {
    {
        const Zendro::MutexLock lock(connectionsMutex_);
        closing_ = true;
    }
    const bool cancelled = cancel_.open() && cancel_.wake();
    if (discoveryThread_ != nullptr) {
        multicast_.breakWait();
        discoveryThread_->join();
        discoveryThread_.reset();
        drainWakeUps(multicast_);
    }
    dialler_->stop();
    const Zendro::MutexLock lock(connectionsMutex_);
    while (dials_ > 0) dialEnded_.wait(connectionsMutex_);
    connections_.clear();
    if (cancelled) cancel_.consume();
}

void MultiClient::removeCommunicator(Communicator* connection) {
    forget(connection, false);
    MultiCommunicator::removeCommunicator(connection);
}

/// Erases the first key of the connection.
void MultiClient::forget(Communicator* connection, bool redial) {
    const Zendro::MutexLock lock(connectionsMutex_);
    const auto found = std::find_if(connections_.begin(), connections_.end(),
                                    [=](const auto& each) { return each.second == connection; });
    if (found == connections_.end()) return;
    const std::string key = found->first;
    connections_.erase(found);
    if (!redial) return;
    const auto colon = key.rfind(':');
    dialler_->lost(key.substr(0, colon), static_cast<unsigned short>(std::stoi(key.substr(colon + 1))));
}

int MultiClient::connectThread() {
    ServerInfoQueryEvent query;
    query.setMask(mask_);
    query.setId(static_cast<short>(id_));
    const double start = getSystemTime();
    query.send(&multicast_);
    int timeOut = kQueryAgainMs;
    for (;;) {
        const int result = multicast_.waitForData(timeOut);
        if (result < Receiver::WaitData) return 0;
        if (result == Receiver::WaitData) {
            if (!receiveAnnouncement()) return 0;
            continue;
        }
        query.send(&multicast_);
        if (getSystemTime() - start >= queryDuration_) timeOut = -1;
    }
}

/// False when the channel is broken.
bool MultiClient::receiveAnnouncement() {
    bool alive = true;
    const auto event = receiveDatagramEvent(multicast_, alive);
    const auto* const info = dynamic_cast<const ServerInfoEvent*>(event.get());
    if (info == nullptr || info->getStatus() != kServing) return alive;
    if (!match(info->getMask(), mask_, info->getId(), id_)) return alive;
    try {
        follow(*info);
    } catch (...) {
        printCaughtException();
    }
    return alive;
}

void MultiClient::follow(const ServerInfoEvent& info) {
    if (acceptAnnouncement_ && !acceptAnnouncement_(info)) return;
    std::string host = info.getHostAddress();
    const InetAddress& source = multicast_.getLastAddress();
    if (preferSource_ && isLoopback(host) && !isLoopback(source.getHostAddress())) host = source.getHostAddress();
    // A name would be looked up here for as long as that takes, and by anyone's wish.
    if (!isNumeric(host)) return printError("ERROR: Got an announcement without a numeric host address");
    dialler_->announced(host, info.getPort());
}

bool MultiClient::connectToServer(const std::string& host, unsigned short port) {
    std::vector<SocketAddress> addresses;
    try {
        SocketAddress::resolve(host, port, SocketAddress::NoFlags, SocketAddress::Stream, SocketAddress::TCP,
                               addresses);
    } catch (const Exception&) {
        return false;
    }
    std::unique_ptr<Client> client;
    for (const SocketAddress& address : addresses) {
        const std::string key = keyOf(address.getHostAddress(), address.getServicePort());
        bool connected = false;
        if (!HubsOwnDial::isUnderWay()) dialler_->wanted(address.getHostAddress(), address.getServicePort());
        if (!beginDial(key, connected)) return connected;
        const Dial dial(*this);
        if (client == nullptr) client = makeClient();
        if (opens(*client, address)) return keep(std::move(client), key);
    }
    return false;
}

std::unique_ptr<Client> MultiClient::makeClient() {
    auto client = std::make_unique<Client>();
    const int unset = HubsOwnDial::isUnderWay() ? kDefaultConnectTimeout : 0;
    client->setConnectTimeout(connectTimeoutMs_ < 0 ? unset : connectTimeoutMs_);
    if (cancel_.open()) client->setConnectCancel(cancel_.readEnd());
    return client;
}

/// False when there is nothing to dial: the server is connected, or the hub is being closed.
bool MultiClient::beginDial(const std::string& key, bool& connected) {
    const Zendro::MutexLock lock(connectionsMutex_);
    connected = connections_.count(key) > 0;
    if (connected || closing_) return false;
    ++dials_;
    return true;
}

void MultiClient::endDial() {
    const Zendro::MutexLock lock(connectionsMutex_);
    --dials_;
    dialEnded_.notify_all();
}

/// Adds the connection, unless another thread has connected to the same server meanwhile.
bool MultiClient::keep(std::unique_ptr<Client> client, const std::string& key) {
    client->setConnectTimeout(0);
    client->setConnectCancel(-1);
    client->setTcpNoDelay(tcpNoDelay_);
    const Zendro::MutexLock lock(connectionsMutex_);
    if (closing_) return false;
    if (connections_.count(key) > 0) return true;
    if (maxConnections_ > 0 && getCount() >= maxConnections_) {
        printError("ERROR: Too many connections");
        return false;
    }
    if (!addCommunicator(client.get())) {
        client->close();
        return false;
    }
    connections_[key] = client.release();
    dialler_->allow();
    return true;
}

bool MultiClient::disconnectFromServer(const std::string& host, unsigned short port) {
    const InetAddress address = InetAddress::getByName(host);
    dialler_->forget(address.isValid() ? address.getHostAddress() : host, port);
    if (!address.isValid()) return false;
    return dropServer(keyOf(address.getHostAddress(), port));
}

bool MultiClient::dropServer(const std::string& key) {
    Communicator* connection = nullptr;
    {
        const Zendro::MutexLock lock(connectionsMutex_);
        const auto found = connections_.find(key);
        if (found == connections_.end()) return false;
        connection = found->second;
        connections_.erase(found);
    }
    dropCommunicator(connection);
    return true;
}

/// Of a server that was dialled again while `disconnectFromServer` gave it up.
void MultiClient::giveUp(const std::string& host, unsigned short port) {
    const Zendro::MutexLock lock(connectionsMutex_);
    const auto found = connections_.find(keyOf(host, port));
    if (found == connections_.end()) return;
    auto* const client = dynamic_cast<Client*>(found->second);
    connections_.erase(found);
    if (client != nullptr) client->abort();  // its end is a loss: the hub deletes it when the consumer does not have it
}

void MultiClient::setReconnect(int minMs, int maxMs) {
    dialler_->setPauses(Dialler::Milliseconds(minMs), Dialler::Milliseconds(maxMs));
    setDeleteLost(true);
}

void MultiClient::setMaxServers(int servers) {
    dialler_->setMaxServers(static_cast<std::size_t>(std::max(servers, 0)));
}

bool MultiClient::setDiscoveryInterfaces(const std::vector<std::string>& addressesOrNames) {
    return multicast_.setInterfaces(addressesOrNames);
}

double MultiClient::getSystemTime() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(std::chrono::floor<std::chrono::microseconds>(now)).count();
}

}  // namespace Varnex
