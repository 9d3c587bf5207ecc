// The text is a request.

#include <Varnex/protocols/ProtocolHTTP.h>
#include <fuzz/HttpText.h>

using namespace Varnex;

namespace {

void checkInput(std::uint8_t, Fuzz::Sizes, std::string_view input) {
    const std::string text(input);
    std::istringstream stream(text);
    ProtocolHTTP::Request request;
    const bool isGood = static_cast<bool>(stream >> request);
    Fuzz::check(!stream.good() || request.uri.find('?') == std::string::npos);
    Fuzz::check(isGood || request.header.empty());
    Fuzz::checkRecord<ProtocolHTTP::RequestLine>(text);  // without a query, which is split off a whole request
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
