#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/streams/Hex.h>
#include <Varnex/streams/urlbuf.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <utility>

namespace Varnex {

namespace {

/// What `urlbuf` reads from the text, with "+" for a blank: the text itself, or what `work` holds then.
std::string_view decoded(std::string_view text, std::string& work) {
    if (text.find('%') == std::string_view::npos && text.find('+') == std::string_view::npos) return text;
    work.clear();
    work.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int byte = text[i] == '%' && text.size() - i > 2 ? hexPair(text[i + 1], text[i + 2]) : -1;
        if (byte >= 0) i += 2;
        work += byte >= 0 ? static_cast<char>(byte) : text[i] == '+' ? ' ' : text[i];
    }
    return work;
}

template <class Store>
void splitQuery(std::string_view text, Store store) {
    std::string nameWork, valueWork;
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, text.find('&'));
        text.remove_prefix(std::min(piece.size() + 1, text.size()));
        const std::string_view name = piece.substr(0, piece.find('='));
        const std::string_view value = piece.substr(std::min(name.size() + 1, piece.size()));
        if (!name.empty()) store(decoded(name, nameWork), decoded(value, valueWork));
    }
}

void storeQuery(std::string_view text, Plexa::ParamBag& query) {
    query.clear();
    splitQuery(text, [&](std::string_view name, std::string_view value) { query.setParam(name, value); });
}

template <class Pairs>
std::string joinQuery(const Pairs& pairs) {
    std::ostringstream text;
    std::array<char, 256> work;
    urlbuf code(text);
    code.pubsetbuf(work.data(), std::ssize(work));
    const auto put = [&](const std::string& part) {
        code.sputn(part.data(), std::ssize(part));
        code.pubsync();
    };
    const char* between = "";
    for (const auto& [name, value] : pairs) {
        text << std::exchange(between, "&");
        put(name);
        text << '=';
        put(value);
    }
    return std::move(text).str();
}

}  // namespace

void ProtocolHTTP::Request::splitQuery() {
    const std::size_t mark = uri.find('?');
    if (mark == std::string::npos) return;
    storeQuery(std::string_view(uri).substr(mark + 1), query);
    uri.resize(mark);
}

void ProtocolHTTP::parseQuery(const std::string& text, Plexa::ParamBag& query) {
    storeQuery(text, query);
}

void ProtocolHTTP::parseQuery(const std::string& text, std::map<std::string, std::string>& query) {
    query.clear();
    splitQuery(text, [&](std::string_view name, std::string_view value) { query[std::string(name)] = value; });
}

std::string ProtocolHTTP::createQuery(const Plexa::ParamBag& query) {
    return joinQuery(query.params());
}

std::string ProtocolHTTP::createQuery(const std::map<std::string, std::string>& query) {
    return joinQuery(query);
}

}  // namespace Varnex
