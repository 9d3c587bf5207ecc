#pragma once

#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/web/HeadScanner.h>
#include <Varnex/web/WebLimits.h>

#include <chrono>

namespace Varnex {

class StreamBuf;

// Private to the library.

/// Receives the requests of one connection: the head as a whole, whatever pieces it comes in, then the body.
class RequestReceiver {
public:
    enum class Result {
        Complete,
        Incomplete,  ///< the rest has not come yet; only where nothing waits
        Malformed,
        TooLarge,
        TimedOut,
        Ended,
        NotHttp
    };

    /// `protocol` and `limits` outlive this.
    RequestReceiver(ProtocolHTTP& protocol, const WebLimits& limits, bool waits)
        : protocol_(protocol), limits_(limits), waits_(waits) {}

    /// There is something to receive. Where it waits, the body is left to `receiveBody`.
    [[nodiscard]] Result receive();
    /// Receives what is missing of the body. False: it does not come.
    [[nodiscard]] bool receiveBody(ProtocolHTTP::Request& request);
    /// Before the next request.
    void reset();

    [[nodiscard]] ProtocolHTTP::Request& getRequest() { return request_; }
    /// Bytes that the header announces, and that the method takes; what is not a plain number is 0.
    [[nodiscard]] static unsigned long bodyLength(const ProtocolHTTP::Request& request);
    /// Whether what follows on the connection may be something else for the peer than for us.
    [[nodiscard]] bool isAmbiguous(const ProtocolHTTP::Request& request) const;
    /// Whether a request has begun that is not complete.
    [[nodiscard]] bool isBusy() const { return phase_ != Phase::Idle; }
    /// Whether nothing but the body is missing.
    [[nodiscard]] bool hasHead() const { return phase_ == Phase::Body; }
    /// Since when it is.
    [[nodiscard]] std::chrono::steady_clock::time_point getBegin() const { return begin_; }

private:
    enum class Phase { Idle, Head, Body };

    void begin();
    [[nodiscard]] Result collectHead();
    [[nodiscard]] Result readHead();
    [[nodiscard]] Result collectBody();
    void answerExpectation();
    [[nodiscard]] StreamBuf& buffer() const;

    ProtocolHTTP& protocol_;
    const WebLimits& limits_;
    const bool waits_;
    Phase phase_ = Phase::Idle;
    HeadScanner scanner_;
    ProtocolHTTP::Request request_;
    std::chrono::steady_clock::time_point begin_;
};

}  // namespace Varnex
