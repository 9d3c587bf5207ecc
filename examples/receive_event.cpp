// receive_event PORT: accepts one connection and prints its messages.
#include <Varnex/events/EventReader.h>
#include <Varnex/events/MessageEvent.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Server.h>

#include <iostream>
#include <memory>
#include <string>

int main(int, char** argv) {
    Varnex::Server server;
    server.open("127.0.0.1", static_cast<unsigned short>(std::stoi(argv[1])));
    std::cout << "listening on port " << server.getLocalPort() << std::endl;
    const std::unique_ptr<Varnex::Client> client(server.getClient());
    Varnex::EventReader reader(client.get());
    while (const auto event = reader.read().event)
        if (const auto* message = dynamic_cast<const Varnex::MessageEvent*>(event.get()))
            std::cout << message->getCode() << ' ' << message->getText() << std::endl;
}
