// Sends an event to itself over a loopback connection, and needs what a serial line is made with.
#include <Varnex/events/MessageEvent.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Exception.h>
#include <Varnex/transport/Serial.h>
#include <Varnex/transport/Server.h>

#include <cstdio>
#include <memory>

namespace {

std::unique_ptr<Varnex::Event> thereAndBack(Varnex::Event& event) {
    Varnex::Server server;
    server.open("127.0.0.1", 0);
    Varnex::Client client;
    client.open("127.0.0.1", server.getLocalPort());
    const std::unique_ptr<Varnex::Client> peer(server.getClient());

    Varnex::Event* received = nullptr;
    if (!event.send(&client) || !Varnex::Event::receive(peer.get(), received)) return nullptr;
    return std::unique_ptr<Varnex::Event>(received);
}

}  // namespace

int main() try {
    Varnex::MessageEvent sent(7, "hello from outside");
    sent.setTag(42);
    const auto event = thereAndBack(sent);
    const auto* message = dynamic_cast<const Varnex::MessageEvent*>(event.get());
    if (!message || !Varnex::Serial().setBaudRate(115200)) return 1;
    std::printf("%d %d %s\n", message->getTag(), message->getCode(), message->getText().c_str());
    return 0;
} catch (const Varnex::Exception&) {
    return 2;
}
