#include <Varnex/hub/WhiteboardClient.h>

#include <utility>

namespace Varnex {

void WhiteboardClient::open(Registry registry) {
    close();
    registry_ = std::move(registry);
}

void WhiteboardClient::close() {
    registry_ = nullptr;
    registered_ = false;
}

bool WhiteboardClient::addServer(const std::string& description) {
    if (!ask("addServer?" + description)) return false;
    description_ = description;
    registered_ = true;
    return true;
}

bool WhiteboardClient::removeServer() {
    return !std::exchange(registered_, false) || ask("removeServer?" + description_);
}

bool WhiteboardClient::ping() {
    return ask("ping?");
}

}  // namespace Varnex
