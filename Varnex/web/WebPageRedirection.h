#pragma once

#include <Varnex/web/WebPage.h>

#include <string>

namespace Varnex {

/// Sends the client on to another place, with 302.
class VARNEX_API WebPageRedirection : public WebPage {
public:
    /// A URL, or a reference relative to that of the request.
    explicit WebPageRedirection(std::string location);
    ~WebPageRedirection() override;

    using WebPage::create;
    bool create(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) override;
    [[nodiscard]] WebPageRedirection* clone() const override;

private:
    std::string location_;
};

}  // namespace Varnex
