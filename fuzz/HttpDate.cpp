// The text is a date, and its first bytes are a time.

#include <Varnex/protocols/ProtocolHTTP.h>
#include <fuzz/HttpText.h>

using namespace Varnex;

namespace {

void checkTime(long time) {
    const std::string text = ProtocolHTTP::createTimestamp(time);
    Fuzz::check(text.empty() || (text.size() == 29 && ProtocolHTTP::parseTimestamp(text) == time));
}

void checkNumbers(const std::string& text) {
    const std::vector<unsigned long> numbers = ProtocolHTTP::parseNumber(text, ':');
    if (numbers.empty()) return;
    std::string again;
    for (const unsigned long number : numbers) again += ":" + std::to_string(number);
    Fuzz::check(ProtocolHTTP::parseNumber(again.substr(1), ':') == numbers);
}

void checkInput(std::uint8_t, Fuzz::Sizes, std::string_view text) {
    long time = 0;
    text.copy(reinterpret_cast<char*>(&time), sizeof time);
    for (const long some : {time, time >> 24, ProtocolHTTP::parseTimestamp(std::string(text))}) checkTime(some);
    checkNumbers(std::string(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
