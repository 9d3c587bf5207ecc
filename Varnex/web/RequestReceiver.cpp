#include <Varnex/web/RequestReceiver.h>

#include <Varnex/streams/ioStream.h>
#include <Varnex/transport/LowerCase.h>
#include <Varnex/transport/Receiver.h>

#include <algorithm>
#include <charconv>
#include <string>

namespace Varnex {

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned long kFirstBodyBlock = 65536;

/// False: not wholly a number that fits.
bool parseLength(std::string_view text, unsigned long& length) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    if (error == std::errc() && end == text.data() + text.size()) return true;
    length = 0;
    return false;
}

bool isOver(unsigned long size, unsigned long limit) {
    return limit > 0 && size > limit;
}

RequestReceiver::Result resultOf(int waited) {
    if (waited == Receiver::WaitTimedOut) return RequestReceiver::Result::TimedOut;
    return RequestReceiver::Result::Ended;
}

}  // namespace

StreamBuf& RequestReceiver::buffer() const {
    return *protocol_.getStream()->rdbuf();
}

unsigned long RequestReceiver::bodyLength(const ProtocolHTTP::Request& request) {
    unsigned long length = 0;
    if (request.method == "POST") parseLength(request.header.getParam("Content-Length"), length);
    return length;
}

bool RequestReceiver::isAmbiguous(const ProtocolHTTP::Request& request) const {
    const MessageHeader& header = request.header;
    if (header.hasParam("Transfer-Encoding") || scanner_.isAmbiguous()) return true;
    if (!header.hasParam("Content-Length")) return false;
    unsigned long length = 0;
    return !parseLength(header.getParam("Content-Length"), length) || (length > 0 && request.method != "POST");
}

void RequestReceiver::reset() {
    phase_ = Phase::Idle;
    buffer().setDeadline(-1);
}

RequestReceiver::Result RequestReceiver::receive() {
    if (phase_ == Phase::Idle) begin();
    if (phase_ == Phase::Head) {
        Result result = collectHead();
        if (result == Result::Complete) result = readHead();
        if (result != Result::Complete) return result;
        phase_ = Phase::Body;
        answerExpectation();
    }
    return waits_ ? Result::Complete : collectBody();
}

void RequestReceiver::begin() {
    phase_ = Phase::Head;
    scanner_ = {};
    begin_ = Clock::now();
}

RequestReceiver::Result RequestReceiver::collectHead() {
    const std::string_view first = buffer().unreadData();
    bool isWhole = !first.empty() && scanner_.isWhole(first);
    if (!isWhole && waits_ && limits_.receiveTimeout > 0) buffer().setDeadline(limits_.receiveTimeout * 1000);
    while (!isWhole) {
        if (isOver(buffer().unreadData().size(), limits_.maxHead)) return Result::TooLarge;
        const int waited = buffer().receiveMore(waits_ ? -1 : 0);
        if (waited != Receiver::WaitData)
            return waits_ || waited != Receiver::WaitTimedOut ? resultOf(waited) : Result::Incomplete;
        isWhole = scanner_.isWhole(buffer().unreadData());
    }
    return isOver(scanner_.getSize(), limits_.maxHead) ? Result::TooLarge : Result::Complete;
}

RequestReceiver::Result RequestReceiver::readHead() {
    if (!protocol_.receiveRequest(request_)) return Result::Malformed;
    if (request_.version.name != "HTTP") return Result::NotHttp;
    return Result::Complete;
}

/// A peer may send the body only when it is told to go on.
void RequestReceiver::answerExpectation() {
    const unsigned long length = bodyLength(request_);
    if (length == 0 || isOver(length, limits_.maxBody) || !buffer().unreadData().empty()) return;
    std::string expected = request_.header.getParam("Expect");
    makeLowerCase(expected);
    if (expected == "100-continue" && request_.version.major == 1 && request_.version.minor > 0)
        *protocol_.getStream() << "HTTP/1.1 100 Continue\r\n\r\n" << std::flush;
}

/// Without waiting.
RequestReceiver::Result RequestReceiver::collectBody() {
    const unsigned long length = bodyLength(request_);
    if (isOver(length, limits_.maxBody)) return Result::Complete;  // and it will not be read
    std::string& body = request_.body;
    for (;;) {
        const std::size_t size = body.size(), there = std::min(buffer().unreadData().size(), length - size);
        body.resize(size + there);
        buffer().sgetn(body.data() + size, static_cast<std::streamsize>(there));
        if (body.size() == length) return Result::Complete;
        const int waited = buffer().receiveMore(0);
        if (waited == Receiver::WaitTimedOut) return Result::Incomplete;
        if (waited != Receiver::WaitData) return Result::Complete;  // without the rest, which `receiveBody` will miss
    }
}

bool RequestReceiver::receiveBody(ProtocolHTTP::Request& request) {
    const unsigned long length = bodyLength(request);
    std::string& body = request.body;
    if (waits_ && limits_.receiveTimeout > 0 && buffer().unreadData().size() < length - body.size())
        buffer().setDeadline(limits_.receiveTimeout * 1000);
    while (body.size() < length) {
        const unsigned long size = body.size();
        int n = static_cast<int>(std::min({length - size, std::max(size, kFirstBodyBlock), 1UL << 30U}));
        body.resize(size + static_cast<unsigned long>(n));
        const bool isWhole = protocol_.receiveBody(reinterpret_cast<unsigned char*>(body.data() + size), n);
        body.resize(size + static_cast<unsigned long>(n));
        if (!isWhole) return false;
    }
    return true;
}

}  // namespace Varnex
