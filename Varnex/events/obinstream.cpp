#include <Varnex/events/obinstream.h>

#include <Varnex/events/BigEndian.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <ostream>

namespace Varnex {

template <class UInt>
obinstream& obinstream::writeNumber(UInt value) {
    char bytes[sizeof(UInt)];
    storeBigEndian(bytes, value);
    stream_.write(bytes, sizeof bytes);
    return *this;
}

obinstream& obinstream::writeText(const char* text, std::size_t size) {
    writeNumber(static_cast<std::uint32_t>(size));
    stream_.write(text, static_cast<std::streamsize>(size));
    return *this;
}

obinstream& obinstream::operator<<(bool value) {
    return writeNumber(static_cast<std::uint8_t>(value ? 1 : 0));
}

obinstream& obinstream::operator<<(char value) {
    return writeNumber(static_cast<std::uint8_t>(value));
}

obinstream& obinstream::operator<<(signed char value) {
    return writeNumber(static_cast<std::uint8_t>(value));
}

obinstream& obinstream::operator<<(unsigned char value) {
    return writeNumber(value);
}

obinstream& obinstream::operator<<(short value) {
    return writeNumber(static_cast<std::uint16_t>(value));
}

obinstream& obinstream::operator<<(unsigned short value) {
    return writeNumber(value);
}

obinstream& obinstream::operator<<(int value) {
    return writeNumber(static_cast<std::uint32_t>(value));
}

obinstream& obinstream::operator<<(unsigned int value) {
    return writeNumber(value);
}

obinstream& obinstream::operator<<(long value) {
    return writeNumber(static_cast<std::uint32_t>(value));
}

obinstream& obinstream::operator<<(unsigned long value) {
    return writeNumber(static_cast<std::uint32_t>(value));
}

obinstream& obinstream::operator<<(float value) {
    return writeNumber(std::bit_cast<std::uint32_t>(value));
}

obinstream& obinstream::operator<<(double value) {
    return writeNumber(std::bit_cast<std::uint64_t>(value));
}

obinstream& obinstream::operator<<(const char* text) {
    return writeText(text, std::strlen(text));
}

obinstream& obinstream::operator<<(const std::string& text) {
    return writeText(text.data(), text.size());
}

}  // namespace Varnex
