// Byte 0 of each step chooses a type to read: what was read whole, written again, gives the bytes it was read from.

#include <Varnex/events/ibinstream.h>
#include <Varnex/events/obinstream.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>

namespace {

template <class T>
void readAndWriteAgain(std::istringstream& stream) {
    const std::string rest = stream.str().substr(static_cast<std::size_t>(stream.tellg()));
    T value{};
    Varnex::ibinstream(stream) >> value;
    if (!stream) return;
    std::ostringstream wire;
    Varnex::obinstream(wire) << value;
    const bool canonical = !std::is_same_v<T, bool> || rest[0] == 0 || rest[0] == 1;
    if (canonical && !rest.starts_with(wire.str())) std::abort();
}

constexpr void (*kSteps[])(std::istringstream&) = {
    &readAndWriteAgain<bool>,          &readAndWriteAgain<char>,          &readAndWriteAgain<signed char>,
    &readAndWriteAgain<short>,         &readAndWriteAgain<unsigned char>, &readAndWriteAgain<unsigned short>,
    &readAndWriteAgain<int>,           &readAndWriteAgain<unsigned int>,  &readAndWriteAgain<long>,
    &readAndWriteAgain<unsigned long>, &readAndWriteAgain<float>,         &readAndWriteAgain<double>,
    &readAndWriteAgain<std::string>};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream stream(std::string(data, data + size));
    for (char step = 0; stream.get(step);) kSteps[static_cast<unsigned char>(step) % std::size(kSteps)](stream);
    return 0;
}
