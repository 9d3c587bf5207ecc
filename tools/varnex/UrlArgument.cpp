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
    return text.size() <= kMaxShown ? inQuotes(text) : inQuotes(text.substr(0, kMaxShown)) + "...";
}

std::string wordsOf(const URLImpl::Exception& error, const std::string& otherwise) {
    const std::string words = error.what();
    return words.empty() ? otherwise : words;
}

}  // namespace VarnexTool
