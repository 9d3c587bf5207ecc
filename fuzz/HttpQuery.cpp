// Byte 0 chooses whether the text is a query or the credentials of basic authorization.

#include <Varnex/protocols/ProtocolHTTP.h>
#include <fuzz/HttpText.h>

using namespace Varnex;

namespace {

void checkQuery(const std::string& text) {
    Plexa::ParamBag query, same;
    ProtocolHTTP::parseQuery(text, query);
    ProtocolHTTP::parseQuery(ProtocolHTTP::createQuery(query), same);
    Fuzz::check(Fuzz::paramsOf(query) == Fuzz::paramsOf(same));
    std::map<std::string, std::string> sorted, again;
    ProtocolHTTP::parseQuery(text, sorted);
    ProtocolHTTP::parseQuery(ProtocolHTTP::createQuery(sorted), again);
    Fuzz::check(sorted == again && sorted.size() == query.params().size());
}

void checkAuthorization(const std::string& text) {
    MessageHeader header;
    header.setParam("Authorization", text);
    std::string user, password;
    if (!ProtocolHTTP::parseAuthorization(header, user, password)) return;
    Fuzz::check(ProtocolHTTP::checkAuthorization(header, user, password));
    Fuzz::check(!ProtocolHTTP::checkAuthorization(header, user + "x", password));
}

void checkInput(std::uint8_t choice, Fuzz::Sizes, std::string_view text) {
    return (choice & 2) == 0 ? checkQuery(std::string(text)) : checkAuthorization(std::string(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
