#include <Varnex/web/WebClient.h>

#include <Varnex/streams/ioStream.h>
#include <Varnex/transport/Exception.h>
#include <Varnex/transport/NetCommunicator.h>
#include <Varnex/web/RequestReceiver.h>
#include <Varnex/web/WebConnection.h>
#include <Varnex/web/WebServer.h>

#include <utility>

namespace Varnex {

namespace {

void takeOver(Communicator* communicator) {
    if (auto* const connection = dynamic_cast<WebConnection*>(communicator)) connection->takeOver();
}

const SocketAddress* addressOf(const Communicator* communicator) {
    if (const auto* const connection = dynamic_cast<const WebConnection*>(communicator))
        return &connection->getRemoteAddress();
    const auto* const socket = dynamic_cast<const NetCommunicator*>(communicator);
    return socket == nullptr ? nullptr : &socket->getRemoteAddress();
}

}  // namespace

WebClient::WebClient(WebServer& server, std::unique_ptr<Communicator> communicator, bool waits)
    : server_(server), communicator_(std::move(communicator)), protocol_(nullptr) {
    protocol_.setCommunicator(communicator_.get());
    receiver_ = std::make_unique<RequestReceiver>(protocol_, server.getLimits(), waits);
}

WebClient::~WebClient() {
    protocol_.setStream(nullptr);  // before the connection that it is on
}

StreamBuf& WebClient::getBuffer() const {
    return *protocol_.getStream()->rdbuf();
}

std::string WebClient::getPeer() const try {
    const SocketAddress* const address = addressOf(communicator_.get());
    return address == nullptr ? "unknown" : address->toString();
} catch (const Exception&) {
    return "unknown";
}

int WebClient::waitForRequest(int timeout) {
    isWaiting_ = true;
    const bool isEnd = server_.isClosing() && !receiver_->isBusy();
    const int result = getBuffer().waitForData(isEnd ? 0 : timeout);  // what is there already is still served
    isWaiting_ = false;
    return isEnd && result == Receiver::WaitTimedOut ? static_cast<int>(Receiver::WaitBroken) : result;
}

void WebClient::stop() {
    const Zendro::MutexLock lock(ending_);
    if (!isGone_ && isWaiting_) communicator_->breakWait();
}

void WebClient::abort() {
    const Zendro::MutexLock lock(ending_);
    if (isGone_) return;
    if (auto* const connection = dynamic_cast<WebConnection*>(communicator_.get()))
        connection->abort();
    else
        communicator_->breakWait();
}

void WebClient::linger() {
    auto* const connection = dynamic_cast<WebConnection*>(communicator_.get());
    if (connection != nullptr && hasUnreadBody_) connection->linger();
}

void WebClient::end() {
    const Zendro::MutexLock lock(ending_);
    if (std::exchange(isGone_, true)) return;
    getBuffer().setDeadline(0);  // what could not be sent is not tried again
    getBuffer().close();
}

ioStream* WebClient::releaseStream() {
    const Zendro::MutexLock lock(ending_);
    if (std::exchange(isGone_, true)) return nullptr;
    takeOver(communicator_.get());
    getBuffer().setDeadline(-1);
    getBuffer().ownSender();
    static_cast<void>(communicator_.release());
    return protocol_.releaseStream();
}

std::unique_ptr<Communicator> WebClient::releaseCommunicator(std::string& unread) {
    unread.clear();
    const Zendro::MutexLock lock(ending_);
    if (std::exchange(isGone_, true)) return nullptr;
    takeOver(communicator_.get());
    unread = getBuffer().unreadData();
    protocol_.getStream()->flush();
    protocol_.setStream(nullptr);
    return std::move(communicator_);
}

}  // namespace Varnex
