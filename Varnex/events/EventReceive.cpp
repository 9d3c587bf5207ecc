#include <Varnex/events/Event.h>

#include <Varnex/events/BigEndian.h>
#include <Varnex/events/EventHeader.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/Receiver.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <istream>
#include <memory>
#include <new>

namespace Varnex {

namespace {

constinit std::atomic<unsigned int> maxLength = Event::kDefaultMaxLength;

enum class Transfer { Complete, Nothing, BrokenOff, Failed };

/// Receives exactly `size` bytes; makes one attempt also when there are none to receive.
Transfer receiveAll(Receiver& r, char* bytes, int size) {
    int have = 0;
    do {
        int n = size - have;
        if (!r.waitForData() || !r.receive(bytes + have, n)) return Transfer::Failed;
        if (n <= 0) return have == 0 ? Transfer::Nothing : Transfer::BrokenOff;
        have += n;
    } while (have < size);
    return Transfer::Complete;
}

std::unique_ptr<char[]> allocate(int length) {
    return std::unique_ptr<char[]>(new (std::nothrow) char[static_cast<std::size_t>(length)]);
}

bool refuseIncomplete() {
    printError("ERROR: Got incomplete Varnex event");
    return false;
}

}  // namespace

void Event::setMaxLength(unsigned int bytes) {
    maxLength.store(bytes, std::memory_order_relaxed);
}

unsigned int Event::getMaxLength() {
    return maxLength.load(std::memory_order_relaxed);
}

bool Event::isTooLong(int length) {
    const unsigned int limit = getMaxLength();
    return limit != 0 && static_cast<unsigned int>(length) > limit;
}

bool Event::receive(Receiver* r, Event*& out) {
    out = nullptr;
    char header[kHeaderSize];
    const Transfer begin = receiveAll(*r, header, kHeaderSize);
    if (begin == Transfer::Nothing) return true;
    if (begin == Transfer::BrokenOff) return refuseIncomplete();
    if (begin == Transfer::Failed) return false;

    const EventType* type = nullptr;
    int length = 0;
    const HeaderVerdict verdict = checkHeader(header, type, length);
    if (verdict == HeaderVerdict::Refused) return false;
    if (verdict == HeaderVerdict::BadLength) return refuseIncomplete();

    const auto buffer = allocate(length);
    if (buffer == nullptr) return refuseIncomplete();
    const Transfer rest = receiveAll(*r, buffer.get() + kHeaderSize, length - kHeaderSize);
    if (rest == Transfer::Failed) return false;
    if (rest != Transfer::Complete) return refuseIncomplete();
    std::copy_n(header, kHeaderSize, buffer.get());
    return deliver(makeEvent(*type, buffer.get(), length), out);
}

bool Event::receive(std::istream& is, Event*& out) {
    out = nullptr;
    char header[kHeaderSize];
    if (!is.read(header, kHeaderSize).good()) return false;
    const EventType* type = nullptr;
    int length = 0;
    if (checkHeader(header, type, length) != HeaderVerdict::Good) return false;

    const auto buffer = allocate(length);
    if (buffer == nullptr || !is.read(buffer.get() + kHeaderSize, length - kHeaderSize).good()) return false;
    std::copy_n(header, kHeaderSize, buffer.get());
    return deliver(makeEvent(*type, buffer.get(), length), out);
}

bool Event::parse(const void* data, int size, Event*& out) {
    out = nullptr;
    if (data == nullptr || size < kHeaderSize) return refuseIncomplete();
    const auto* const bytes = static_cast<const char*>(data);
    const EventType* type = nullptr;
    int length = 0;
    const HeaderVerdict verdict = checkHeader(bytes, type, length);
    if (verdict == HeaderVerdict::Refused) return false;
    if (verdict == HeaderVerdict::BadLength || length > size) return refuseIncomplete();
    return deliver(makeEvent(*type, bytes, length), out);
}

/// Reads a header through a plain event. A wrong magic or an unknown type is refused, with its line printed.
Event::HeaderVerdict Event::checkHeader(const char* header, const EventType*& type, int& length) {
    Event plain;
    const Buffer buffer(plain, const_cast<char*>(header), kHeaderSize);  // only read from
    plain.read();
    length = static_cast<int>(loadBigEndian<std::uint32_t>(header + kLengthOffset));
    if (plain._valid && length < kHeaderSize) return HeaderVerdict::BadLength;
    type = plain._valid ? EventType::findType(plain._typeID) : nullptr;
    if (type == nullptr) {
        printError("ERROR: Got Varnex event of unknown type (typeID = " + std::to_string(plain._typeID) + ")");
        return HeaderVerdict::Refused;
    }
    return isTooLong(length) ? HeaderVerdict::BadLength : HeaderVerdict::Good;
}

/// Makes an event of a checked header's type and lets it read its fields. Null when its factory makes none, or memory
/// does not suffice.
std::unique_ptr<Event> Event::makeEvent(const EventType& type, const char* data, int length) try {
    std::unique_ptr<Event> event(type.create());
    if (event == nullptr) return nullptr;
    const Buffer buffer(*event, const_cast<char*>(data), length);  // only read from
    event->read();
    return event;
} catch (const std::bad_alloc&) {
    return nullptr;  // the peer chose the size
}

bool Event::deliver(std::unique_ptr<Event> event, Event*& out) {
    out = event.release();
    if (out == nullptr) printError("ERROR: Cannot create Varnex event");
    return out != nullptr;
}

}  // namespace Varnex
