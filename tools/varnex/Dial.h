#pragma once

#include "Endpoint.h"

#include <Varnex/transport/Client.h>

#include <chrono>

namespace VarnexTool {

inline constexpr double kDefaultConnectSeconds = 10;

/// Opens a connection that sends small packets at once. Throws `Failure` with the reason.
void dial(Varnex::Client& client, const Endpoint& to, std::chrono::duration<double> timeout);

/// Waits, for a second and a half at most, until the peer has taken everything and closes too.
void hangUp(Varnex::Client& client);

/// Throws away what a connection brings to a program that only sends, as one to a hub does, so that it does not fill
/// up.
class Discarder {
public:
    explicit Discarder(Varnex::Client& client) : client_(client) {}

    /// Between two sends; never waits, and looks only now and then.
    void turn();

private:
    Varnex::Client& client_;
    std::chrono::steady_clock::time_point next_{};
};

}  // namespace VarnexTool
