// Connections of different kinds in one hub: what arrives as a datagram goes out over TCP, all in one process.
#include <Varnex/events/EventReader.h>
#include <Varnex/events/MessageEvent.h>
#include <Varnex/hub/HubReader.h>
#include <Varnex/hub/HubTarget.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Exception.h>
#include <Varnex/transport/Server.h>
#include <Varnex/transport/UDP.h>

#include <iostream>

int main() try {
    auto udp = std::make_unique<Varnex::UDP>();
    Varnex::UDP sensor;
    if (!udp->open() || !sensor.open()) return 1;
    sensor.setDestination(Varnex::InetAddress::getByAddress("127.0.0.1"), udp->getPort());
    Varnex::Server server;
    server.open("127.0.0.1", 0);
    Varnex::Client display;
    display.open("127.0.0.1", server.getLocalPort());

    Varnex::MultiCommunicator hub;
    hub.addCommunicator(udp.release());  // a hub owns its connections
    hub.addCommunicator(server.getClient());
    Varnex::HubReader reader(hub);

    Varnex::MessageEvent(3, "hello").send(&sensor);
    const auto news = reader.read();
    auto others = Varnex::HubTarget::allBut(hub, news.connection);
    if (!news.event || !news.event->send(&others)) return 1;

    const auto received = Varnex::EventReader(&display).read().event;
    const auto* const message = dynamic_cast<const Varnex::MessageEvent*>(received.get());
    if (message == nullptr) return 1;
    std::cout << message->getCode() << ' ' << message->getText() << '\n';
    return message->getText() == "hello" ? 0 : 1;
} catch (const Varnex::Exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
