#include "Endpoint.h"

#include "Failure.h"
#include "Quote.h"

#include <Varnex/transport/Exception.h>
#include <Varnex/transport/SocketAddress.h>

#include <algorithm>
#include <charconv>

namespace VarnexTool {

namespace {

constexpr std::size_t kMaxHostSize = 253;  // of a host name, RFC 1035 section 2.3.4

[[noreturn]] void refuse(std::string_view text, const std::string& why) {
    constexpr std::size_t kShown = 80;
    throw UsageError(inQuotes(text.substr(0, kShown)) + ": " + why);
}

unsigned short parsePort(std::string_view text, std::string_view port) {
    unsigned short number = 0;
    const char* const end = port.data() + port.size();
    const auto [stop, error] = std::from_chars(port.data(), end, number);
    if (error != std::errc() || stop != end) refuse(text, "the port must be a number from 0 to 65535");
    return number;
}

void checkHost(std::string_view text, std::string_view host) {
    if (host.size() > kMaxHostSize) refuse(text, "the host is too long");
    const auto isBad = [](unsigned char c) { return c <= ' ' || c == 0x7F || c == '[' || c == ']' || c == '/'; };
    if (std::any_of(host.begin(), host.end(), isBad)) refuse(text, "the host has a character that no host has");
}

/// Splits at the last colon; the host keeps its brackets.
Endpoint parse(std::string_view text, bool hostIsOptional) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos) {
        if (!hostIsOptional) refuse(text, "expected HOST:PORT");
        if (text.find_first_not_of("0123456789") != std::string_view::npos) refuse(text, "expected [HOST:]PORT");
        return {"", parsePort(text, text)};
    }
    std::string_view host = text.substr(0, colon);
    const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    if (bracketed) host = host.substr(1, host.size() - 2);
    if (!bracketed && host.find(':') != std::string_view::npos)
        refuse(text, "an IPv6 address stands in brackets, as in [::1]:4711");
    checkHost(text, host);
    return {std::string(host), parsePort(text, text.substr(colon + 1))};
}

}  // namespace

Endpoint Endpoint::toListen(std::string_view text) {
    return parse(text, true);
}

Endpoint Endpoint::toConnect(std::string_view text) {
    Endpoint endpoint = parse(text, false);
    if (endpoint.host.empty()) refuse(text, "the host is missing, expected HOST:PORT");
    if (endpoint.port == 0) refuse(text, "port 0 cannot be connected to");
    return endpoint;
}

Endpoint Endpoint::of(const Varnex::SocketAddress& address) {
    try {
        return {address.getHostAddress(), address.getServicePort()};
    } catch (const Varnex::Exception&) {
        return {"?", 0};
    }
}

std::string Endpoint::text() const {
    const bool brackets = host.find(':') != std::string::npos;
    return (brackets ? '[' + host + ']' : host) + ':' + std::to_string(port);
}

}  // namespace VarnexTool
