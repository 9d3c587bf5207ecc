// echo_server PORT [CONNECTIONS [SECONDS]]: sends each line back to the client that it came from, one client after
// another; port 0: the system chooses one. Ends after so many connections. A client has so many seconds (60) for all
// that it sends, and may leave unread for as long what comes back.
#include <Varnex/streams/ioStream.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Exception.h>
#include <Varnex/transport/Server.h>

#include <iostream>
#include <limits>
#include <sstream>

namespace {

// Ends with the first line that is longer than the array, so that nobody can fill the memory.
void echo(Varnex::Client* client, int ms) {
    client->setSendTimeout(ms);             // for a client that does not read
    Varnex::ioStream stream(client, true);  // owns the client
    stream.rdbuf()->setDeadline(ms);        // for a client that trickles: all reads together
    char line[4096];
    while (stream.getline(line, sizeof line) && !stream.eof()) {
        line[stream.gcount() - 1] = '\n';  // where `getline` put the terminator
        stream.write(line, stream.gcount()).flush();
    }
}

bool isNumber(const char* text, auto& number) {
    return static_cast<bool>(std::istringstream(text) >> number);
}

}  // namespace

int main(int argc, char** argv) try {
    unsigned short port = 0, seconds = 60;
    auto connections = std::numeric_limits<unsigned long>::max();
    if (argc < 2 || argc > 4 || !isNumber(argv[1], port) || (argc > 2 && !isNumber(argv[2], connections)) ||
        (argc > 3 && !isNumber(argv[3], seconds))) {
        std::cerr << "usage: echo_server PORT [CONNECTIONS [SECONDS]]\n";
        return 2;
    }
    Varnex::Server server;
    server.open("127.0.0.1", port);
    std::cout << "listening on port " << server.getLocalPort() << std::endl;
    for (; connections > 0; --connections) echo(server.getClient(), seconds * 1000);
} catch (const Varnex::Exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
