// Byte 0 is the size of the first datagram, and so on: what discovery makes of them, and what a full queue takes for
// the state of an object.

#include <Varnex/events/StateKey.h>
#include <Varnex/hub/DatagramEvent.h>
#include <Varnex/transport/DatagramCommunicator.h>
#include <Varnex/transport/Diagnostics.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace Varnex;

namespace {

[[maybe_unused]] const DiagnosticSink before = setDiagnosticSink([](DiagnosticStream, std::string_view) {});

/// Holds one datagram, in a block of exactly its size.
struct OneDatagram : DatagramCommunicator {
    std::vector<char> bytes;

    OneDatagram(const std::uint8_t* data, std::size_t size) : bytes(data, data + size) {}
    bool open() override { return true; }
    bool dataAvail(int& n) override { return n = static_cast<int>(bytes.size()), true; }
    bool receive(void* data, int& n) override {
        n = std::min(n, static_cast<int>(bytes.size()));
        if (n > 0) std::memcpy(data, bytes.data(), static_cast<std::size_t>(n));
        return true;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    while (size > 0) {
        const std::size_t length = std::min<std::size_t>(data[0], size - 1);
        OneDatagram datagram(data + 1, length);
        bool alive = false;
        const auto event = receiveDatagramEvent(datagram, alive);
        if (!alive || (event != nullptr && length < Event::kHeaderSize)) std::abort();
        const auto key = stateKeyOf(datagram.bytes.data(), static_cast<int>(length));
        if (key && key->size() > length) std::abort();
        data += 1 + length;
        size -= 1 + length;
    }
    return 0;
}
