#include "UrlArgument.h"

#include "Failure.h"
#include "Quote.h"

#include <Varnex/streams/Trim.h>
#include <Varnex/url/URLProtocol.h>

namespace VarnexTool {

namespace {

using Varnex::URLImpl;

constexpr std::size_t kMaxShown = 200;  // a "data:" URL can have megabytes

std::string knownSchemes() {
    std::string list;
    for (const std::string& scheme : URLImpl::Protocol::getSchemes()) list += (list.empty() ? "" : ", ") + scheme;
    return list;
}

/// "user:***@" where it has "user:password@", also in the URL of an archive.
std::string withoutPasswords(std::string text) {
    for (std::size_t start = 0; (start = text.find("//", start)) != std::string::npos;) {
        start += 2;
        const std::string authority = text.substr(start, text.find_first_of("/?#", start) - start);
        const std::size_t colon = authority.find(':'), sign = authority.rfind('@');
        if (sign != std::string::npos && colon < sign) text.replace(start + colon + 1, sign - colon - 1, "***");
    }
    return text;
}

std::string whyNoUrl(std::string text) {
    Varnex::trim(text);
    if (text.empty()) return "the URL is blank";
    std::string scheme;
    if (!URLImpl::parseScheme(text, scheme)) return "cannot be resolved against its base";
    if (URLImpl::Protocol::find(scheme) != nullptr) return "this is no URL of the scheme " + inQuotes(scheme);
    return "unknown scheme " + inQuotes(scheme) + " (known: " + knownSchemes() + ")";
}

}  // namespace

Varnex::URL resolveUrl(const Varnex::URL& base, const std::string& text) {
    try {
        if (Varnex::URL url = Varnex::URL::resolve(base, text)) return url;
    } catch (const URLImpl::Exception& error) {
        throw Failure(urlInQuotes(text) + ": " + wordsOf(error, "cannot be parsed"));
    }
    throw Failure(urlInQuotes(text) + ": " + whyNoUrl(text));
}

std::string urlInQuotes(const std::string& text) {
    const std::string shown = withoutPasswords(text);
    return shown.size() <= kMaxShown ? inQuotes(shown) : inQuotes(shown.substr(0, kMaxShown)) + "...";
}

std::string wordsOf(const URLImpl::Exception& error, const std::string& otherwise) {
    const std::string words = error.what();
    return words.empty() ? otherwise : words;
}

}  // namespace VarnexTool
