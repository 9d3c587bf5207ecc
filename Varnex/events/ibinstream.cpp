#include <Varnex/events/ibinstream.h>

#include <Varnex/events/BigEndian.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <istream>

namespace Varnex {

namespace {

constexpr std::size_t kTextStep = 65536;

}  // namespace

template <class UInt>
UInt ibinstream::readNumber() {
    char bytes[sizeof(UInt)];
    return stream_.read(bytes, sizeof bytes) ? loadBigEndian<UInt>(bytes) : UInt{0};
}

ibinstream& ibinstream::operator>>(bool& value) {
    value = readNumber<std::uint8_t>() != 0;
    return *this;
}

ibinstream& ibinstream::operator>>(char& value) {
    value = static_cast<char>(readNumber<std::uint8_t>());
    return *this;
}

ibinstream& ibinstream::operator>>(signed char& value) {
    value = static_cast<signed char>(readNumber<std::uint8_t>());
    return *this;
}

ibinstream& ibinstream::operator>>(unsigned char& value) {
    value = readNumber<std::uint8_t>();
    return *this;
}

ibinstream& ibinstream::operator>>(short& value) {
    value = static_cast<short>(readNumber<std::uint16_t>());
    return *this;
}

ibinstream& ibinstream::operator>>(unsigned short& value) {
    value = readNumber<std::uint16_t>();
    return *this;
}

ibinstream& ibinstream::operator>>(int& value) {
    value = static_cast<int>(readNumber<std::uint32_t>());
    return *this;
}

ibinstream& ibinstream::operator>>(unsigned int& value) {
    value = readNumber<std::uint32_t>();
    return *this;
}

ibinstream& ibinstream::operator>>(long& value) {
    value = static_cast<std::int32_t>(readNumber<std::uint32_t>());
    return *this;
}

ibinstream& ibinstream::operator>>(unsigned long& value) {
    value = readNumber<std::uint32_t>();
    return *this;
}

ibinstream& ibinstream::operator>>(float& value) {
    value = std::bit_cast<float>(readNumber<std::uint32_t>());
    return *this;
}

ibinstream& ibinstream::operator>>(double& value) {
    value = std::bit_cast<double>(readNumber<std::uint64_t>());
    return *this;
}

ibinstream& ibinstream::operator>>(char* text) {
    const auto count = readNumber<std::uint32_t>();
    if (!stream_) return *this;
    stream_.read(text, count);
    text[count] = '\0';
    return *this;
}

ibinstream& ibinstream::operator>>(std::string& text) {
    const std::size_t count = readNumber<std::uint32_t>();
    text.clear();
    while (text.size() < count && stream_) {
        const std::size_t have = text.size();
        const std::size_t step = std::min(count - have, kTextStep);
        text.resize(have + step);
        stream_.read(text.data() + have, static_cast<std::streamsize>(step));
        text.resize(have + static_cast<std::size_t>(stream_.gcount()));
    }
    return *this;
}

}  // namespace Varnex
