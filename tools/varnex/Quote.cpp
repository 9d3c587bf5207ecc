#include "Quote.h"

#include <cstddef>
#include <cstdint>

namespace VarnexTool {

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

struct Character {
    char32_t code = 0;
    std::size_t size = 0;  // bytes; 0: no UTF-8
};

unsigned byteAt(std::string_view text, std::size_t i) {
    return static_cast<unsigned char>(text[i]);
}

std::size_t sequenceLength(unsigned lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead < 0xE0) return 2;
    if (lead >= 0xE0 && lead < 0xF0) return 3;
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

/// Decodes the first character of a text that is not empty.
Character decode(std::string_view text) {
    constexpr unsigned kLeadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const unsigned lead = byteAt(text, 0);
    const std::size_t size = sequenceLength(lead);
    if (size == 0 || size > text.size()) return {};
    char32_t code = lead & kLeadBits[size];
    for (std::size_t i = 1; i < size; ++i) {
        const unsigned byte = byteAt(text, i);
        if ((byte & 0xC0) != 0x80) return {};
        code = code << 6 | (byte & 0x3F);
    }
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    if (code < kSmallest[size] || surrogate || code > 0x10FFFF) return {};
    return {code, size};
}

bool isHarmless(char32_t code) {
    if (code < 0x20 || (code >= 0x7F && code < 0xA0)) return false;
    const bool line = code == 0x2028 || code == 0x2029;
    const bool direction =
        code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    return !line && !direction;
}

void appendHex(std::string& out, char32_t number) {
    int shift = 4;
    while (number >> shift > 0xF) shift += 4;
    for (; shift >= 0; shift -= 4) out += kHexDigits[number >> shift & 0xF];
}

void appendEscape(std::string& out, char32_t code) {
    if (code == '\n') {
        out += "\\n";
    } else if (code == '\r') {
        out += "\\r";
    } else if (code == '\t') {
        out += "\\t";
    } else if (code < 0x80) {
        appendHex(out += "\\x", code);
    } else {
        appendHex(out += "\\u{", code);
        out += '}';
    }
}

std::string escape(std::string_view text, bool quotes) {
    std::string out;
    out.reserve(text.size() + 2);
    while (!text.empty()) {
        const Character next = decode(text);
        const std::size_t size = next.size == 0 ? 1 : next.size;
        if (next.size == 0) {
            appendHex(out += "\\x", byteAt(text, 0));
        } else if (!isHarmless(next.code)) {
            appendEscape(out, next.code);
        } else {
            if (quotes && (next.code == '"' || next.code == '\\')) out += '\\';
            out += text.substr(0, size);
        }
        text.remove_prefix(size);
    }
    return out;
}

}  // namespace

std::string escaped(std::string_view text) {
    return escape(text, false);
}

std::string inQuotes(std::string_view text) {
    return '"' + escape(text, true) + '"';
}

}  // namespace VarnexTool
