#pragma once

#include <Varnex/web/WebPage.h>

#include <functional>
#include <string>
#include <vector>

namespace Varnex {

/// Functions by method and path, for an interface of a program's own, such as one with JSON.
///
/// A pattern is a path whose parts in braces stand for one part each: "/points/{id}/name"; "{*rest}" as the last one
/// stands for all that follow. The first pattern that was added and matches is taken. A path without one is 404, one
/// with other methods 405; HEAD is answered as GET, and OPTIONS by the methods there are.
class VARNEX_API WebPageRoutes : public WebPage {
public:
    /// `captures`: what stands in the places of the pattern, decoded, by their names. False: the connection is closed.
    using Handler = std::function<bool(const ProtocolHTTP::Request& request, const Plexa::ParamBag& captures,
                                       ProtocolHTTP::Reply& reply)>;

    /// `prefix`: the path before the patterns, such as "/api"; add the page as prefix + "/*".
    explicit WebPageRoutes(std::string prefix = "");
    ~WebPageRoutes() override;

    WebPageRoutes& add(const std::string& method, const std::string& pattern, Handler handler);

    using WebPage::create;
    bool create(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) override;
    [[nodiscard]] WebPageRoutes* clone() const override;

private:
    struct Route {
        std::string method;
        std::vector<std::string> parts;
        Handler handler;
    };

    std::string prefix_;
    std::vector<Route> routes_;
};

}  // namespace Varnex
