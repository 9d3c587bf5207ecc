#include <Varnex/protocols/ProtocolHTTP.h>

#include <Varnex/protocols/TokenCharacters.h>
#include <Varnex/streams/Trim.h>
#include <Varnex/transport/LowerCase.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace Varnex {

namespace {

/// Of a byte, in header values (RFC 9110, sections 5.5 and 5.6.2).
enum class Kind : char { Control, Text, Slash, Token };

constexpr std::array<Kind, 256> kKinds = [] {
    std::array<Kind, 256> kinds;
    kinds.fill(Kind::Text);
    std::fill_n(kinds.begin(), ' ', Kind::Control);
    kinds['\t'] = Kind::Text;
    kinds[0x7F] = Kind::Control;
    for (const char c : kTokenCharacters) kinds[static_cast<unsigned char>(c)] = Kind::Token;
    kinds['/'] = Kind::Slash;
    return kinds;
}();

bool isAtLeast(char c, Kind kind) {
    return kKinds[static_cast<unsigned char>(c)] >= kind;
}

bool isWholly(std::string_view text, Kind kind) {
    return std::all_of(text.begin(), text.end(), [=](char c) { return isAtLeast(c, kind); });
}

unsigned long skip(const std::string& s, unsigned long pos, std::string_view characters) {
    return std::min(s.find_first_not_of(characters, pos), s.size());
}

bool isAt(const std::string& s, unsigned long pos, char c) {
    return pos < s.size() && s[pos] == c;
}

bool isElementEnd(const std::string& s, unsigned long pos) {
    return pos >= s.size() || s[pos] == ',';
}

/// Whether nothing but the next parameter, or the next element, follows.
bool isPartEnd(const std::string& s, unsigned long pos) {
    pos = skip(s, pos, ws);
    return isElementEnd(s, pos) || s[pos] == ';';
}

/// 1*tchar, or with "/" among them.
bool readToken(const std::string& s, unsigned long& pos, Kind kind, std::string& token) {
    const unsigned long start = pos;
    while (pos < s.size() && isAtLeast(s[pos], kind)) ++pos;
    token.assign(s, start, pos - start);
    return pos > start;
}

/// quoted-string, from its first quote on.
bool readQuoted(const std::string& s, unsigned long& pos, std::string& text) {
    text.clear();
    for (++pos; pos < s.size() && isAtLeast(s[pos], Kind::Text); ++pos) {
        if (s[pos] == '"') return ++pos, true;
        if (s[pos] == '\\' && (++pos == s.size() || !isAtLeast(s[pos], Kind::Text))) break;
        text += s[pos];
    }
    return false;
}

/// parameter, and what has to follow it.
bool readParameter(const std::string& s, unsigned long& pos, std::string& name, std::string& value) {
    if (!readToken(s, pos, Kind::Token, name) || !isAt(s, pos, '=')) return false;
    ++pos;
    const bool isRead = isAt(s, pos, '"') ? readQuoted(s, pos, value) : readToken(s, pos, Kind::Slash, value);
    if (!isRead || !isPartEnd(s, pos)) return false;
    makeLowerCase(name);
    return true;
}

void appendQuoted(std::string& text, std::string_view value) {
    text += '"';
    for (const char c : value) {
        if (c == '"' || c == '\\') text += '\\';
        text += c;
    }
    text += '"';
}

}  // namespace

bool ProtocolHTTP::parseNextToken(const std::string& s, unsigned long& pos, std::string& token) {
    pos = skip(s, pos, " \t,");
    unsigned long end = pos;
    if (!readToken(s, end, Kind::Slash, token) || !isPartEnd(s, end)) {
        token.clear();
        return false;
    }
    pos = end;
    return true;
}

bool ProtocolHTTP::parseNextParameter(const std::string& s, unsigned long& pos, std::string& name, std::string& value) {
    name.clear();
    value.clear();
    pos = skip(s, pos, ws);
    if (!isAt(s, pos, ';')) return false;
    unsigned long at = skip(s, pos, " \t;");
    if (isElementEnd(s, at)) {
        pos = at;
        return false;
    }
    if (!readParameter(s, at, name, value)) {
        name.clear();
        value.clear();
        return false;
    }
    pos = at;
    return true;
}

bool ProtocolHTTP::skipParameters(const std::string& s, unsigned long& pos) {
    std::string name, value;
    while (parseNextParameter(s, pos, name, value)) {
    }
    return isElementEnd(s, pos);
}

bool ProtocolHTTP::parseTokenAndParameters(const std::string& s, std::string& token, Plexa::ParamBag& parameters) {
    parameters.clear();
    std::string first, name, value;
    unsigned long pos = skip(s, 0, ws);
    bool isGood = readToken(s, pos, Kind::Slash, first) && isPartEnd(s, pos);
    while (isGood && parseNextParameter(s, pos, name, value)) parameters.setParam(name, value);
    isGood = isGood && pos >= s.size();
    if (!isGood) {
        first.clear();
        parameters.clear();
    }
    token = std::move(first);
    return isGood;
}

std::string ProtocolHTTP::createTokenAndParameters(const std::string& token, const Plexa::ParamBag& parameters) {
    if (token.empty() || !isWholly(token, Kind::Slash)) return {};
    std::string text = token;
    for (const auto& [name, value] : parameters.params()) {
        if (name.empty() || !isWholly(name, Kind::Token) || !isWholly(value, Kind::Text)) return {};
        text.append("; ").append(name).append("=");
        if (value.empty() || !isWholly(value, Kind::Token))
            appendQuoted(text, value);
        else
            text.append(value);
    }
    return text;
}

}  // namespace Varnex
