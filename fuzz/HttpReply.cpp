// The text is a reply.

#include <Varnex/protocols/ProtocolHTTP.h>
#include <fuzz/HttpText.h>

using namespace Varnex;

namespace {

void checkInput(std::uint8_t, Fuzz::Sizes, std::string_view input) {
    const std::string text(input);
    std::istringstream stream(text);
    ProtocolHTTP::Reply reply;
    const bool isGood = static_cast<bool>(stream >> reply);
    Fuzz::check(isGood ? reply.code >= 100 && reply.code <= 999 : reply.header.empty());
    Fuzz::checkRecord<ProtocolHTTP::Reply>(text);
    Fuzz::checkRecord<ProtocolHTTP::StatusLine>(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
