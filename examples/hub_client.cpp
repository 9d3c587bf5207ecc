// hub_client HOST:PORT prints the messages of a hub, hub_client INTERFACE those of all hubs that it finds there.
#include <Varnex/events/MessageEvent.h>
#include <Varnex/hub/HubReader.h>
#include <Varnex/hub/MultiClient.h>

#include <iostream>
#include <sstream>
#include <string>

int main(int argc, char** argv) {
    const std::string where = argc == 2 ? argv[1] : "";
    const auto colon = where.rfind(':');
    unsigned short port = 0;
    if (where.empty() || (colon != std::string::npos && !(std::istringstream(where.substr(colon + 1)) >> port))) {
        std::cerr << "usage: hub_client HOST:PORT | INTERFACE\n";
        return 2;
    }
    Varnex::MultiClient hub(1);
    hub.setReconnect(250, 8000);
    hub.setConnectedCallback([](Varnex::Communicator*) { std::cout << "connected\n" << std::flush; });
    hub.setLostCallback([](Varnex::Communicator*, Varnex::LostReason) { std::cout << "lost\n" << std::flush; });
    const bool works = colon == std::string::npos
                           ? hub.setDiscoveryInterface(where) && hub.open() && hub.isDiscovering()
                           : hub.connectToServer(where.substr(0, colon), port);
    if (!works) {
        std::cerr << "hub_client: cannot connect, or discover, at " << where << '\n';
        return 1;
    }
    Varnex::HubReader reader(hub);
    for (auto news = reader.read(); news.what != Varnex::HubReader::What::Woken; news = reader.read())
        if (const auto* message = dynamic_cast<const Varnex::MessageEvent*>(news.event.get()))
            std::cout << std::to_string(message->getCode()) + ' ' + message->getText() + '\n' << std::flush;
}
