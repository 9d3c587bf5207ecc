// Byte 0 chooses the way of reading, bytes 1 to 4 the sizes of the pieces: they make no difference to what is read.

#include <Varnex/events/EventReader.h>
#include <Varnex/transport/Diagnostics.h>
#include <tests/support/Scripted.h>

#include <cstdint>
#include <cstdlib>
#include <sstream>

using namespace Varnex;

namespace {

[[maybe_unused]] const DiagnosticSink before = setDiagnosticSink([](DiagnosticStream, std::string_view) {});

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

std::string read(const std::uint8_t* data, std::size_t size, bool inPieces) {
    ScriptedReceiver receiver;
    receiver.bytes.assign(data + 5, data + size);
    receiver.breaks = inPieces && (data[0] & 1) != 0 ? data[0] >> 4 : 0;
    for (int i = 1; inPieces && i < 5; ++i) receiver.pieceSizes.push_back(1 + data[i]);
    std::ostringstream log;
    (data[0] & 1) != 0 ? readAllWithReader(receiver, (data[0] & 2) != 0, log) : readAll(receiver, log);
    return log.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size >= 5 && read(data, size, true) != read(data, size, false)) std::abort();
    return 0;
}
