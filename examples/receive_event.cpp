// receive_event PORT: accepts one connection and prints its messages; port 0: the system chooses one.
#include <Varnex/events/EventReader.h>
#include <Varnex/events/MessageEvent.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Exception.h>
#include <Varnex/transport/Server.h>

#include <iostream>
#include <memory>
#include <sstream>

int main(int argc, char** argv) try {
    unsigned short port = 0;
    if (argc != 2 || !(std::istringstream(argv[1]) >> port)) {
        std::cerr << "usage: receive_event PORT\n";
        return 2;
    }
    Varnex::Server server;
    server.open("127.0.0.1", port);
    std::cout << "listening on port " << server.getLocalPort() << std::endl;
    const std::unique_ptr<Varnex::Client> client(server.getClient());
    Varnex::EventReader reader(client.get());
    Varnex::EventReader::Result result;
    using Status = Varnex::EventReader::Status;
    do {
        result = reader.read();
        if (const auto* message = dynamic_cast<const Varnex::MessageEvent*>(result.event.get()))
            std::cout << message->getCode() << ' ' << message->getText() << std::endl;
    } while (result.status == Status::Event || result.status == Status::Unknown);
    if (result.status == Status::Closed) return 0;
    std::cerr << "the stream broke: " << result.reason << '\n';
    return 1;
} catch (const Varnex::Exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
