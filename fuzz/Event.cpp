// Events from memory, a stream and a datagram: what was received survives another trip unchanged.

#include <Varnex/events/StateKey.h>
#include <Varnex/hub/DatagramEvent.h>
#include <Varnex/transport/DatagramCommunicator.h>
#include <Varnex/transport/Diagnostics.h>
#include <fuzz/Pieces.h>
#include <tests/support/EventWire.h>

using namespace Varnex;

namespace {

[[maybe_unused]] const DiagnosticSink before = setDiagnosticSink([](DiagnosticStream, std::string_view) {});

/// Holds one datagram.
struct OneDatagram : DatagramCommunicator {
    std::string_view bytes;

    explicit OneDatagram(std::string_view datagram) : bytes(datagram) {}
    bool open() override { return true; }
    bool dataAvail(int& n) override { return n = static_cast<int>(bytes.size()), true; }
    bool receive(void* data, int& n) override {
        return n = static_cast<int>(bytes.copy(static_cast<char*>(data), static_cast<std::size_t>(n))), true;
    }
};

void checkRoundTrip(Event& event) {
    const std::string bytes = wireOf(event);
    Event* again = nullptr;
    Fuzz::check(Event::parse(bytes.data(), static_cast<int>(bytes.size()), again));
    const std::unique_ptr<Event> owner(again);
    Fuzz::check(wireOf(*again) == bytes && again->getTag() == event.getTag());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Event* event = nullptr;
    if (Event::parse(data, static_cast<int>(size), event)) checkRoundTrip(*std::unique_ptr<Event>(event));
    const std::string bytes(data, data + size);
    std::istringstream stream(bytes);
    while (Event::receive(stream, event)) checkRoundTrip(*std::unique_ptr<Event>(event));

    OneDatagram datagram(bytes);
    bool alive = false;
    const auto received = receiveDatagramEvent(datagram, alive);
    Fuzz::check(alive && (received == nullptr || size >= Event::kHeaderSize));
    const auto key = stateKeyOf(data, static_cast<int>(size));  // which newer state it gives way to
    Fuzz::check(!key || key->size() <= size);
    return 0;
}
