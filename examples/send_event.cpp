// send_event PORT: sends one event to receive_event.
#include <Varnex/events/MessageEvent.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Exception.h>

#include <iostream>
#include <sstream>

int main(int argc, char** argv) try {
    unsigned short port = 0;
    if (argc != 2 || !(std::istringstream(argv[1]) >> port)) {
        std::cerr << "usage: send_event PORT\n";
        return 2;
    }
    Varnex::Client client;
    client.open("127.0.0.1", port);
    Varnex::MessageEvent event(3, "hello");
    return event.send(&client) ? 0 : 1;
} catch (const Varnex::Exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
