#include "Dial.h"

#include "Failure.h"

#include <Varnex/transport/Exception.h>

#include <algorithm>

namespace VarnexTool {

void dial(Varnex::Client& client, const Endpoint& to, std::chrono::duration<double> timeout) {
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(timeout).count();
    client.setConnectTimeout(static_cast<int>(std::max<long long>(ms, 0)));
    try {
        client.open(to.host, to.port);
    } catch (const Varnex::Exception& error) {
        throw Failure(to.text() + ": " + error.what());
    }
    client.setTcpNoDelay(true);
}

}  // namespace VarnexTool
