// send_event PORT: sends one event to receive_event.
#include <Varnex/events/MessageEvent.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Exception.h>

#include <iostream>
#include <string>

int main(int, char** argv) try {
    Varnex::Client client;
    client.open("127.0.0.1", static_cast<unsigned short>(std::stoi(argv[1])));
    Varnex::MessageEvent event(3, "hello");
    return event.send(&client) ? 0 : 1;
} catch (const Varnex::Exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
