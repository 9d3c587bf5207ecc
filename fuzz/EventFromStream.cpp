// Events from a stream and from memory: what was received survives another trip unchanged.

#include <Varnex/events/Event.h>
#include <Varnex/transport/Diagnostics.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>

using namespace Varnex;

namespace {

[[maybe_unused]] const DiagnosticSink before = setDiagnosticSink([](DiagnosticStream, std::string_view) {});

std::string wireBytes(Event& event) {
    std::ostringstream wire;
    wire << event;
    return wire.str();
}

void checkRoundTrip(Event& event) {
    const std::string bytes = wireBytes(event);
    Event* again = nullptr;
    if (!Event::parse(bytes.data(), static_cast<int>(bytes.size()), again)) std::abort();
    const std::unique_ptr<Event> owner(again);
    if (wireBytes(*again) != bytes || again->getTag() != event.getTag()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Event* event = nullptr;
    if (Event::parse(data, static_cast<int>(size), event)) checkRoundTrip(*std::unique_ptr<Event>(event));
    std::istringstream stream(std::string(data, data + size));
    while (Event::receive(stream, event)) checkRoundTrip(*std::unique_ptr<Event>(event));
    return 0;
}
