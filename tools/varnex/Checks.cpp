#include "Checks.h"

#include "LibraryMessages.h"

#include <Varnex/events/ServerInfoQueryEvent.h>
#include <Varnex/hub/Discovery.h>
#include <Varnex/transport/Exception.h>
#include <Varnex/transport/Server.h>

#include <algorithm>
#include <chrono>
#include <memory>

#include <sys/resource.h>
#include <unistd.h>

namespace VarnexTool {

namespace {

using Varnex::InetAddress;
using Varnex::NetworkInterface;

constexpr std::chrono::seconds kHearTime{1};
constexpr int kQueryTTL = 1;  // not beyond the local network
constexpr rlim_t kDescriptorsPerConnection = 3;
constexpr rlim_t kUsualDescriptors = 1024;

const std::string kGroup = std::string(Varnex::kDiscoveryGroup) + ":" + std::to_string(Varnex::kDiscoveryPort);

bool isLoopback(const InetAddress& address) {
    return address.getHostAddress().starts_with("127.");
}

/// A mask without bits matches no server's.
Varnex::ServerInfoQueryEvent unanswerableQuery() {
    Varnex::ServerInfoQueryEvent query;
    query.setMask(0);
    query.setId(static_cast<short>(::getpid()));
    return query;
}

bool isSame(const Varnex::ServerInfoQueryEvent& sent, const Varnex::Event* heard) {
    const auto* const query = dynamic_cast<const Varnex::ServerInfoQueryEvent*>(heard);
    return query != nullptr && query->getMask() == 0 && query->getId() == sent.getId();
}

/// Whether the next datagram is that query. Others' are passed over.
bool takesBack(Varnex::Multicast& channel, const Varnex::ServerInfoQueryEvent& sent) {
    char datagram[64];
    int n = sizeof datagram;
    const bool received = channel.receive(datagram, n);
    channel.discardDatagram();
    if (!received) return false;
    Varnex::Event* event = nullptr;
    Varnex::Event::parse(datagram, n, event);
    const std::unique_ptr<Varnex::Event> owner(event);
    return isSame(sent, event);
}

bool hears(Varnex::Multicast& channel, const Varnex::ServerInfoQueryEvent& sent) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + kHearTime;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        const int result = channel.waitForData(static_cast<int>(std::max<long long>(left, 0)));
        if (result != Varnex::Receiver::WaitData || left <= 0) return false;
        if (takesBack(channel, sent)) return true;
    }
}

}  // namespace

const char* Finding::levelName() const {
    return level == Ok ? "ok" : level == Warning ? "warning" : "problem";
}

Finding checkInterface(const NetworkInterface& interface, bool mustWork) {
    const std::string device = interface.name.empty() ? "DEVICE" : interface.name;
    Finding finding{mustWork ? Finding::Problem : Finding::Warning,
                    "interface " + device + " " + interface.address.getHostAddress(), "", ""};
    const auto tell = [&](std::string what, std::string fix) {
        finding.what = std::move(what);
        finding.fix = std::move(fix);
        return finding;
    };
    if (!interface.isUp) return tell("is down", "ip link set " + device + " up");
    if (!interface.canMulticast && !isLoopback(interface.address))
        return tell("carries no multicast", "ip link set " + device + " multicast on, or choose another --interface");
    Varnex::Multicast channel;
    channel.setAddress(Varnex::kDiscoveryGroup);
    channel.setPort(Varnex::kDiscoveryPort);
    channel.setInterface(interface.address);
    channel.setTTL(kQueryTTL);
    if (!channel.open())
        return tell(withLibraryMessage("cannot join " + kGroup),
                    "let no other user's program hold UDP port " + std::to_string(Varnex::kDiscoveryPort));
    auto query = unanswerableQuery();
    if (!query.send(&channel))
        return tell(withLibraryMessage("cannot send to " + kGroup), "ip route add 224.0.0.0/4 dev " + device);
    if (!hears(channel, query))
        return tell("does not hear what is sent to " + kGroup,
                    "let the firewall pass UDP port " + std::to_string(Varnex::kDiscoveryPort) + " to 224.0.0.0/4");
    finding.level = Finding::Ok;
    return tell("sends and hears multicast on " + kGroup, "");
}

Finding checkHostName(bool mustWork) {
    const InetAddress address = InetAddress::getLocalHost();
    const std::string subject = "host name " + InetAddress::getLocalHostName();
    const std::string what = "is " + address.getHostAddress();
    const std::string fix = "choose --interface for each command, or give the name its network address in /etc/hosts";
    const Finding::Level failure = mustWork ? Finding::Problem : Finding::Warning;
    if (!address.isValid()) return {failure, subject, "has no address: nothing is discovered without --interface", fix};
    if (isLoopback(address)) return {Finding::Warning, subject, what + ": discovery stays on this machine", fix};
    const auto all = NetworkInterface::getAll();
    const bool isOurs = std::any_of(all.begin(), all.end(), [&](const auto& each) { return each.address == address; });
    if (isOurs) return {Finding::Ok, subject, what, ""};
    return {failure, subject, what + ", which no interface of this machine has", fix};
}

Finding checkPort(unsigned short port) {
    const std::string subject = "TCP port " + std::to_string(port);
    const auto canListen = [port](bool sharing) {
        Varnex::Server server;
        server.setPortSharing(sharing);
        try {
            server.open("", port);
            return true;
        } catch (const Varnex::Exception&) {
            return false;
        }
    };
    const std::string fix = "ss -ltnp 'sport = :" + std::to_string(port) + "' shows by whom; choose another --port";
    if (canListen(false)) return {Finding::Ok, subject, "is free", ""};
    if (canListen(true))
        return {Finding::Warning, subject, "is taken and shared: a second server takes connections away unnoticed",
                fix};
    return {Finding::Warning, subject, "is taken, or not for this user", fix};
}

Finding checkDescriptors() {
    const std::string subject = "descriptor limit";
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return {Finding::Warning, subject, "cannot be told", ""};
    if (limit.rlim_cur == RLIM_INFINITY) return {Finding::Ok, subject, "is none", ""};
    const std::string what = "is " + std::to_string(limit.rlim_cur) + ", for some " +
                             std::to_string(limit.rlim_cur / kDescriptorsPerConnection) + " connections of a hub";
    if (limit.rlim_cur >= kUsualDescriptors) return {Finding::Ok, subject, what, ""};
    return {Finding::Warning, subject, what,
            "ulimit -n " + std::to_string(std::max(kUsualDescriptors, limit.rlim_cur))};
}

}  // namespace VarnexTool
