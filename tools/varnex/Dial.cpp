#include "Dial.h"

#include "Failure.h"

#include <Varnex/transport/Exception.h>

#include <algorithm>

namespace VarnexTool {

namespace {

constexpr std::chrono::milliseconds kHangUpTime{1500};  // less than what a stop leaves
constexpr std::chrono::milliseconds kDiscardPause{10};

}  // namespace

void dial(Varnex::Client& client, const Endpoint& to, std::chrono::duration<double> timeout) {
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(timeout).count();
    client.setConnectTimeout(static_cast<int>(std::max<long long>(ms, 0)));
    try {
        client.open(to.host, to.port);
    } catch (const Varnex::Exception& error) {
        throw Failure(to.text() + ": " + error.what());
    }
    client.setTcpNoDelay(true);
}

void Discarder::turn() {
    const auto now = std::chrono::steady_clock::now();
    if (now < next_) return;
    next_ = now + kDiscardPause;
    char unwanted[65536];
    int n = 1;
    while (n > 0 && client_.waitForData(0) == Varnex::Receiver::WaitData) {
        n = sizeof unwanted;
        if (!client_.receive(unwanted, n)) return;
    }
}

void hangUp(Varnex::Client& client) {
    if (!client.shutdownSend()) return;
    const auto end = std::chrono::steady_clock::now() + kHangUpTime;
    char unwanted[4096];
    int n = 1;
    while (n > 0) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
        if (left <= 0 || client.waitForData(static_cast<int>(left)) != Varnex::Receiver::WaitData) return;
        n = sizeof unwanted;
        if (!client.receive(unwanted, n)) return;
    }
}

}  // namespace VarnexTool
