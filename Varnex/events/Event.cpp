#include <Varnex/events/Event.h>

#include <Varnex/events/BigEndian.h>
#include <Varnex/events/EventHeader.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/Sender.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <ostream>

namespace Varnex {

namespace {

/// The received magic as text that a terminal can show: up to the first NUL, anything but printable ASCII as "?".
std::string printable(const char* magic) {
    std::string text(magic);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

}  // namespace

const char Event::_magic[5] = "VX01";

Event::~Event() = default;

Event& Event::operator=(const Event& other) {
    _tag = other._tag;
    return *this;
}

Event* Event::create() {
    return new Event;
}

EventType* Event::type() const {
    return &_type;
}

void Event::addFields() {
    const EventType* const own = type();
    addData(_magic, kMagicSize);
    if (own == nullptr || own->id == 0)
        printError("ERROR: Unknown type in Event::addFields() - did you forget to register your event type ?");
    addField(_size);
    addField(own == nullptr ? short{0} : own->id);
    addField(_tag);
    _valid = true;
}

void Event::getFields() {
    char magic[kMagicSize + 1] = {};
    getData(magic, kMagicSize);
    if (std::memcmp(magic, _magic, kMagicSize) != 0) {
        printError("ERROR: " + printable(magic) + "is not a valid Event magic key !");
        return;
    }
    int length = 0;
    getField(length);
    _size = std::min(length, _size);  // whatever a header claims, no read goes beyond the bytes that are there
    getField(_typeID);
    getField(_tag);
    _valid = true;
}

int Event::write() {
    _valid = false;
    _tooLarge = false;
    addFields();
    if (_tooLarge) return 0;
    const auto count = static_cast<int>(_pos - _buffer);
    if (_valid)
        storeBigEndian(_buffer + kLengthOffset, static_cast<std::uint32_t>(count));
    else
        printOutput(
            "ERROR: No valid data in Event::write(), did you forget to call first ParentClass::addFields() then the "
            "addFields method of your Event specialisation?");
    return count;
}

int Event::read() {
    _valid = false;
    getFields();
    if (!_valid)
        printOutput(
            "ERROR: No valid data in Event::read(), did you forget to call first ParentClass::getFields() then the "
            "getFields method of your Event specialisation?");
    return static_cast<int>(_pos - _buffer);
}

bool Event::send(Sender* s) {
    char bytes[kFirstBufferSize];
    const Buffer buffer(*this, bytes, sizeof bytes);
    const int length = write();
    int n = length;
    return length > 0 && s->send(_buffer, n) && n == length;
}

std::ostream& operator<<(std::ostream& os, Event& e) {
    char bytes[Event::kFirstBufferSize];
    const Event::Buffer buffer(e, bytes, sizeof bytes);
    if (const int length = e.write(); length > 0) os.write(e._buffer, length);
    return os;
}

Event::Buffer::Buffer(Event& event, char* bytes, int size, bool quiet) : event_(event) {
    event._buffer = event._pos = bytes;
    event._size = size;
    event._borrowed = true;
    event._quiet = quiet;
}

Event::Buffer::~Buffer() {
    event_.releaseBuffer();
}

void Event::releaseBuffer() {
    if (!_borrowed) delete[] _buffer;
    _buffer = _pos = nullptr;
    _size = 0;
    _borrowed = _quiet = false;
}

void Event::addData(const void* data, long n) {
    if (n <= 0 || _tooLarge) return;
    const long long needed = (_pos - _buffer) + static_cast<long long>(n);
    if (needed > _size && !grow(needed)) return;
    std::memcpy(_pos, data, static_cast<std::size_t>(n));
    _pos += n;
}

bool Event::grow(long long needed) {
    long long size = std::max(_size, 1);
    while (size < needed) size *= 2;
    char* const bigger = size > INT_MAX ? nullptr : new (std::nothrow) char[static_cast<std::size_t>(size)];
    if (bigger == nullptr) {
        printError("ERROR: Event too large");
        _tooLarge = true;
        return false;
    }
    if (!_quiet) printError("Varnex::Event: Resize buffer to " + std::to_string(size));
    const auto written = _pos - _buffer;
    if (written > 0) std::memcpy(bigger, _buffer, static_cast<std::size_t>(written));
    if (!_borrowed) delete[] _buffer;
    _borrowed = false;
    _buffer = bigger;
    _pos = bigger + written;
    _size = static_cast<int>(size);
    return true;
}

void Event::getData(void* data, long n) {
    if (n <= 0 || n > remaining()) return;
    std::memcpy(data, _pos, static_cast<std::size_t>(n));
    _pos += n;
}

template <class UInt>
void Event::addNumber(UInt value) {
    if (remaining() < static_cast<long>(sizeof value)) {
        char bytes[sizeof value];
        storeBigEndian(bytes, value);
        return addData(bytes, sizeof bytes);
    }
    storeBigEndian(_pos, value);
    _pos += sizeof value;
}

template <class UInt>
UInt Event::takeNumber() {
    if (remaining() < static_cast<long>(sizeof(UInt))) return 0;
    const auto value = loadBigEndian<UInt>(_pos);
    _pos += sizeof(UInt);
    return value;
}

void Event::addField(bool value) {
    addNumber(static_cast<std::uint16_t>(value ? 1 : 0));
}

void Event::addField(const short& value) {
    addNumber(static_cast<std::uint16_t>(value));
}

void Event::addField(const unsigned short& value) {
    addNumber(value);
}

void Event::addField(const int& value) {
    addNumber(static_cast<std::uint32_t>(value));
}

void Event::addField(const unsigned int& value) {
    addNumber(value);
}

void Event::addField(const long& value) {
    addNumber(static_cast<std::uint32_t>(value));
}

void Event::addField(const unsigned long& value) {
    addNumber(static_cast<std::uint32_t>(value));
}

void Event::addFieldUInt64(const unsigned long long& value) {
    addNumber(value);
}

void Event::addField(const float& value) {
    addNumber(std::bit_cast<std::uint32_t>(value));
}

void Event::addField(const double& value) {
    addNumber(std::bit_cast<std::uint64_t>(value));
}

void Event::addField(const char* data, int len) {
    if (data == nullptr) return;
    addData(data, len == -1 ? static_cast<long>(std::strlen(data)) : len);
}

void Event::addField(const std::string& value) {
    addNumber(static_cast<std::uint16_t>(value.size()));
    addData(value.data(), static_cast<long>(value.size()));
}

void Event::getField(bool& value) {
    value = takeNumber<std::uint16_t>() != 0;
}

void Event::getField(short& value) {
    value = static_cast<short>(takeNumber<std::uint16_t>());
}

void Event::getField(unsigned short& value) {
    value = takeNumber<std::uint16_t>();
}

void Event::getField(int& value) {
    value = static_cast<int>(takeNumber<std::uint32_t>());
}

void Event::getField(unsigned int& value) {
    value = takeNumber<std::uint32_t>();
}

void Event::getField(long& value) {
    value = static_cast<std::int32_t>(takeNumber<std::uint32_t>());
}

void Event::getField(unsigned long& value) {
    value = takeNumber<std::uint32_t>();
}

void Event::getFieldUInt64(unsigned long long& value) {
    value = takeNumber<std::uint64_t>();
}

void Event::getField(float& value) {
    value = std::bit_cast<float>(takeNumber<std::uint32_t>());
}

void Event::getField(double& value) {
    value = std::bit_cast<double>(takeNumber<std::uint64_t>());
}

void Event::getField(char* data, int len) {
    getData(data, len);
}

void Event::getField(std::string& value) {
    const auto count = static_cast<std::int16_t>(takeNumber<std::uint16_t>());
    if (count > remaining()) return;
    if (count <= 0) {  // a count above 32,767 reads as negative
        value.clear();
        return;
    }
    value.assign(_pos, static_cast<std::size_t>(count));
    _pos += count;
}

}  // namespace Varnex
