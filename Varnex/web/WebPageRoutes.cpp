#include <Varnex/web/WebPageRoutes.h>

#include <Varnex/url/URLImpl.h>
#include <Varnex/web/HtmlText.h>

#include <algorithm>
#include <utility>

namespace Varnex {

namespace {

using Parts = std::vector<std::string>;

/// What stands between the slashes.
Parts split(const std::string& path) {
    Parts parts;
    for (std::size_t begin = path.starts_with('/') ? 1 : 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        parts.push_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

bool isPlace(const std::string& part) {
    return part.size() > 2 && part.front() == '{' && part.back() == '}';
}

bool takesRest(const Parts& pattern) {
    return !pattern.empty() && isPlace(pattern.back()) && pattern.back().starts_with("{*");
}

void capture(Plexa::ParamBag& captures, const std::string& place, std::size_t skipped, std::string value) {
    URLImpl::decodeUnsafeCharacters(value);
    captures.setParam(place.substr(skipped, place.size() - skipped - 1), value);
}

std::string joined(const Parts& parts, std::size_t first) {
    std::string text;
    for (std::size_t i = first; i < parts.size(); ++i) text += (i > first ? "/" : "") + parts[i];
    return text;
}

bool matches(const Parts& pattern, const Parts& parts, Plexa::ParamBag& captures) {
    captures.clear();
    const bool hasRest = takesRest(pattern);
    const std::size_t fixed = pattern.size() - (hasRest ? 1 : 0);
    if (hasRest ? parts.size() < pattern.size() : parts.size() != pattern.size()) return false;
    for (std::size_t i = 0; i < fixed; ++i) {
        if (isPlace(pattern[i]) && !parts[i].empty())
            capture(captures, pattern[i], 1, parts[i]);
        else if (pattern[i] != parts[i])
            return false;
    }
    if (hasRest) capture(captures, pattern.back(), 2, joined(parts, fixed));
    return true;
}

void addMethod(std::string& methods, const std::string& method) {
    methods += (methods.empty() ? "" : ", ") + method + (method == "GET" ? ", HEAD" : "");
}

}  // namespace

WebPageRoutes::WebPageRoutes(std::string prefix) : prefix_(std::move(prefix)) {}

WebPageRoutes::~WebPageRoutes() = default;

WebPageRoutes* WebPageRoutes::clone() const {
    return new WebPageRoutes(*this);
}

WebPageRoutes& WebPageRoutes::add(const std::string& method, const std::string& pattern, Handler handler) {
    routes_.push_back({method, split(pattern), std::move(handler)});
    return *this;
}

bool WebPageRoutes::create(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) {
    URLImpl::Components url;
    URLImpl::parseURL(request.uri, url);
    const Parts parts = split(url.path.starts_with(prefix_) ? url.path.substr(prefix_.size()) : url.path);
    const std::string& method = request.method == "HEAD" ? "GET" : request.method;
    Plexa::ParamBag captures;
    std::string methods;
    for (const Route& route : routes_) {
        if (!matches(route.parts, parts, captures)) continue;
        if (route.method == method) return route.handler(request, captures, reply);
        addMethod(methods, route.method);
    }
    reply.code = methods.empty() ? 404 : request.method == "OPTIONS" ? 204 : 405;
    if (!methods.empty()) reply.header.setParam("Allow", methods + ", OPTIONS");
    if (reply.code == 204) return true;
    reply.header.setParam("Content-Type", "text/html");
    reply.body = htmlPage(std::to_string(reply.code) + " " + ProtocolHTTP::getStatusPhrase(reply.code));
    return true;
}

}  // namespace Varnex
