#pragma once

#include "Endpoint.h"

#include <Varnex/transport/Client.h>

#include <chrono>

namespace VarnexTool {

inline constexpr double kDefaultConnectSeconds = 10;

/// Opens a connection that sends small packets at once. Throws `Failure` with the reason.
void dial(Varnex::Client& client, const Endpoint& to, std::chrono::duration<double> timeout);

/// Waits, for two seconds at most, until the peer has taken everything and closes too.
void hangUp(Varnex::Client& client);

}  // namespace VarnexTool
