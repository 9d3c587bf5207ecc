// The text is a header value: a token with parameters, or a list of them.

#include <Varnex/protocols/ProtocolHTTP.h>
#include <fuzz/HttpText.h>

using namespace Varnex;

namespace {

void checkOne(const std::string& text) {
    std::string token, same;
    Plexa::ParamBag params, again;
    const bool isGood = ProtocolHTTP::parseTokenAndParameters(text, token, params);
    Fuzz::check(isGood ? !token.empty() : token.empty() && params.empty());
    const std::string written = ProtocolHTTP::createTokenAndParameters(token, params);
    Fuzz::check(isGood == ProtocolHTTP::parseTokenAndParameters(written, same, again));
    Fuzz::check(token == same && Fuzz::paramsOf(params) == Fuzz::paramsOf(again));
}

void checkList(const std::string& text) {
    std::string token, name, value;
    for (unsigned long pos = 0; ProtocolHTTP::parseNextToken(text, pos, token);) {
        unsigned long walked = pos, before = 0;
        const bool isGood = ProtocolHTTP::skipParameters(text, pos);
        while (before = walked, ProtocolHTTP::parseNextParameter(text, walked, name, value))
            Fuzz::check(walked > before && !name.empty());
        Fuzz::check(walked == pos && pos <= text.size());
        Fuzz::check(isGood == (pos == text.size() || text[pos] == ','));
    }
}

void checkInput(std::uint8_t, Fuzz::Sizes, std::string_view text) {
    checkOne(std::string(text));
    checkList(std::string(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
