// The text is a header.

#include <Varnex/protocols/MessageHeader.h>
#include <fuzz/HttpText.h>

using namespace Varnex;

namespace {

void checkInput(std::uint8_t, Fuzz::Sizes, std::string_view input) {
    const std::string text(input);
    std::istringstream stream(text);
    MessageHeader header;
    Fuzz::check(stream >> header || header.empty());
    Fuzz::checkRecord<MessageHeader>(text);
    MessageHeader safe;
    for (const auto& [name, value] : header.params()) (void)safe.setChecked(name, value);
    const std::string written = Fuzz::shown(safe);
    Fuzz::check(std::count(written.begin(), written.end(), '\n') == std::ssize(safe.params()) + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
