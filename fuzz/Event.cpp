// Events from memory, a stream, a datagram and a connection: what was received survives another trip unchanged. Byte 0
// chooses the way of reading from a connection, bytes 1 to 4 the sizes of its pieces, which make no difference.

#include <Varnex/events/EventReader.h>
#include <Varnex/events/StateKey.h>
#include <Varnex/hub/DatagramEvent.h>
#include <Varnex/transport/DatagramCommunicator.h>
#include <Varnex/transport/Diagnostics.h>
#include <fuzz/Pieces.h>
#include <tests/support/EventWire.h>
#include <tests/support/Scripted.h>

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

void readAll(Receiver& receiver, std::ostream& log) {
    for (Event* event = nullptr; Event::receive(&receiver, event) && event != nullptr;)
        log << *std::unique_ptr<Event>(event);
}

void readAllWithReader(ScriptedReceiver& receiver, bool resynchronise, std::ostream& log) {
    EventReader reader(&receiver);
    reader.setResynchronise(resynchronise);
    for (EventReader::Result r; r.status != EventReader::Status::Closed && log.good();) {
        r = reader.read();
        if (r.status == EventReader::Status::Woken) continue;
        if (r.event != nullptr) log << *r.event;
        log << static_cast<int>(r.status) << ' ' << r.typeID << ' ' << r.length << ' ' << r.lost << r.reason << '\n';
        if (r.status == EventReader::Status::Broken) return;
    }
}

std::string readConnection(std::uint8_t choice, Fuzz::Sizes sizes, std::string_view bytes, bool inPieces) {
    const bool withReader = (choice & 1) != 0;
    ScriptedReceiver receiver;
    receiver.bytes = bytes;
    receiver.breaks = inPieces && withReader ? choice >> 4 : 0;
    for (const std::uint8_t size : sizes)
        if (inPieces) receiver.pieceSizes.push_back(size + 1u);
    std::ostringstream log;
    withReader ? readAllWithReader(receiver, (choice & 2) != 0, log) : readAll(receiver, log);
    return log.str();
}

void checkDatagram(std::string_view bytes) {
    OneDatagram datagram(bytes);
    bool alive = false;
    const auto received = receiveDatagramEvent(datagram, alive);
    Fuzz::check(alive && (received == nullptr || bytes.size() >= Event::kHeaderSize));
    const auto key = stateKeyOf(bytes.data(), static_cast<int>(bytes.size()));  // which newer state it gives way to
    Fuzz::check(!key || key->size() <= bytes.size());
}

void checkInput(std::uint8_t choice, Fuzz::Sizes sizes, std::string_view bytes) {
    Event* event = nullptr;
    if (Event::parse(bytes.data(), static_cast<int>(bytes.size()), event))
        checkRoundTrip(*std::unique_ptr<Event>(event));
    std::istringstream stream{std::string(bytes)};
    while (Event::receive(stream, event)) checkRoundTrip(*std::unique_ptr<Event>(event));
    checkDatagram(bytes);
    Fuzz::check(readConnection(choice, sizes, bytes, true) == readConnection(choice, sizes, bytes, false));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
