// hub_server PORT [INTERFACE]: relays each event to all other clients; port 0: the system chooses one. With an
// interface, such as eth0, clients find it there.
#include <Varnex/hub/HubReader.h>
#include <Varnex/hub/HubTarget.h>
#include <Varnex/hub/MultiServer.h>

#include <iostream>
#include <sstream>

int main(int argc, char** argv) {
    unsigned short port = 0;
    if (argc < 2 || argc > 3 || !(std::istringstream(argv[1]) >> port)) {
        std::cerr << "usage: hub_server PORT [INTERFACE]\n";
        return 2;
    }
    Varnex::MultiServer hub(1);
    hub.setSendPolicy({Varnex::SendPolicy::Queue, Varnex::SendPolicy::KeepNewest});
    hub.setPortSharing(false);
    const bool isFound = argc == 3;
    if (isFound && !hub.setDiscoveryInterface(argv[2])) return 1;
    if (!hub.open("", port, isFound) || hub.isAnnouncing() != isFound) return 1;
    std::cout << "listening on port " << hub.getLocalPort() << std::endl;

    Varnex::HubReader reader(hub);
    reader.setKeepUnknown(true);
    for (auto news = reader.read(); news.what != Varnex::HubReader::What::Woken; news = reader.read()) {
        auto others = Varnex::HubTarget::allBut(hub, news.connection);
        int n = static_cast<int>(reader.getBytes().size());
        if (n > 0) others.send(reader.getBytes().data(), n);
    }
}
