#include <Varnex/hub/MultiServer.h>

#include <Varnex/events/ServerInfoQueryEvent.h>
#include <Varnex/hub/DatagramEvent.h>
#include <Varnex/hub/Discovery.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/IOException.h>
#include <Varnex/transport/PrintLine.h>

#include <chrono>
#include <utility>

namespace Varnex {

MultiServer::MultiServer(long mask) : mask_(mask) {
    prepareDiscovery(multicast_);
}

MultiServer::~MultiServer() {
    MultiServer::close();
}

bool MultiServer::open(const std::string& host, unsigned short port, bool announce) {
    close();
    if (!MultiCommunicator::open()) return false;
    try {
        server_.open(host, port);
        // What the waits need is made now or never.
        static_cast<void>(server_.waitForClient(0));
        if (!acceptPause_.open()) throw IOException("Cannot create pipe");
    } catch (const Exception& failure) {
        printError(std::string("ERROR: ") + failure.what());
        MultiCommunicator::close();
        return false;
    }
    using Loop = Zendro::ObjectThread<MultiServer>;
    acceptThread_ = std::make_unique<Loop>(this, &MultiServer::connectThread);
    if (!acceptThread_->start()) {
        printError("ERROR: Cannot start the thread that accepts clients");
        close();
        return false;
    }
    if (announce && multicast_.open()) {
        fillInfo();
        announceThread_ = std::make_unique<Loop>(this, &MultiServer::multicastThread);
        if (!announceThread_->start()) announceThread_.reset();
    }
    return true;
}

bool MultiServer::close() {
    stopAnnouncing();
    stopAccepting();
    const bool multicastClosed = multicast_.close();
    try {
        server_.close();
    } catch (const IOException& failure) {
        printError(std::string("ERROR: ") + failure.what());
        MultiCommunicator::close();
        return false;
    }
    return MultiCommunicator::close() && multicastClosed;
}

void MultiServer::stopAnnouncing() {
    if (announceThread_ == nullptr) return;
    multicast_.breakWait();
    announceThread_->join();
    announceThread_.reset();
    drainWakeUps(multicast_);
    info_.setStatus(kClosingDown);
    info_.send(&multicast_);
}

void MultiServer::stopAccepting() try {
    if (acceptThread_ == nullptr) return;
    acceptPause_.breakWait();
    server_.breakWait();
    acceptThread_->join();
    acceptThread_.reset();
    while (server_.waitForClient(0) == Server::WaitBroken) {
    }
} catch (const IOException&) {
    acceptThread_.reset();  // without a pipe, or a socket, nothing waited
}

int MultiServer::connectThread() {
    std::unique_ptr<Client> refused;
    while (acceptOne(refused)) {
    }
    return 0;
}

/// False when the loop is over.
bool MultiServer::acceptOne(std::unique_ptr<Client>& refused) try {
    if (server_.waitForClient(-1) != Server::WaitClient) return false;
    std::unique_ptr<Client> client(server_.getClient());
    refused.reset();
    if (!isUsable(*client)) return true;
    client->setTcpNoDelay(tcpNoDelay_);
    if (addCommunicator(client.get()))
        client.release();
    else
        refused = std::move(client);  // whoever refused it may still look at it
    acceptPause_.succeeded();
    return true;
} catch (const IOException& failure) {
    return acceptPause_.pauseAfter(failure);
} catch (...) {
    printCaughtException();
    return true;
}

/// False, and the connection will be closed, when there is no room for it.
bool MultiServer::isUsable(Client& client) {
    if (maxConnections_ > 0 && getCount() >= maxConnections_) {
        acceptPause_.tell("Too many connections");
        return false;
    }
    return client.waitForData(0) != Receiver::WaitFailed;  // no descriptors left for its wake-ups
}

int MultiServer::multicastThread() {
    using Clock = std::chrono::steady_clock;
    info_.send(&multicast_);
    auto answered = Clock::time_point();
    bool alive = true;
    while (multicast_.waitForData()) {
        const auto event = receiveDatagramEvent(multicast_, alive);
        if (!alive) break;
        const auto* const query = dynamic_cast<const ServerInfoQueryEvent*>(event.get());
        if (query == nullptr || !match(query->getMask(), mask_, query->getId(), id_)) continue;
        if (Clock::now() - answered < std::chrono::milliseconds(answerIntervalMs_)) continue;
        answered = Clock::now();
        info_.send(&multicast_);
    }
    return 0;
}

void MultiServer::fillInfo() {
    info_.setStatus(kServing);
    info_.setMask(mask_);
    info_.setId(static_cast<short>(id_));
    info_.setHostName(InetAddress::getLocalHostName());
    info_.setHostAddress(hostToAnnounce());
    info_.setPort(server_.getLocalPort());
}

std::string MultiServer::hostToAnnounce() const {
    if (!announcedHost_.empty()) try {
            std::vector<SocketAddress> all;
            SocketAddress::resolve(announcedHost_, "", SocketAddress::NoFlags, SocketAddress::Stream,
                                   SocketAddress::TCP, all);
            return all.at(0).getHostAddress();
        } catch (const Exception& failure) {
            printError("ERROR: Cannot announce " + announcedHost_ + " (" + failure.what() + ")");
        }
    return (interfaceAddress_.isValid() ? interfaceAddress_ : InetAddress::getLocalHost()).getHostAddress();
}

bool MultiServer::setDiscoveryInterfaces(const std::vector<std::string>& addressesOrNames) {
    if (!multicast_.setInterfaces(addressesOrNames)) return false;
    const InetAddress first = multicast_.getInterfaces().front().address;
    interfaceAddress_ = first.isAnyLocalAddress() ? InetAddress() : first;
    return true;
}

}  // namespace Varnex
