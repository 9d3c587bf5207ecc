#pragma once

#include <Varnex/web/WebPage.h>

namespace Varnex {

/// What a function of the application makes.
class VARNEX_API WebPageCallback : public WebPage {
public:
    using RequestFunction = bool (*)(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply);
    using ClientFunction = bool (*)(WebClient* client, const ProtocolHTTP::Request& request,
                                    ProtocolHTTP::Reply& reply);

    /// Not null. What they return is what `WebPage::create` returns.
    explicit WebPageCallback(RequestFunction function) : requestFunction_(function) {}
    explicit WebPageCallback(ClientFunction function) : clientFunction_(function) {}
    ~WebPageCallback() override;

    using WebPage::create;
    bool create(WebClient* client, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) override;
    [[nodiscard]] WebPageCallback* clone() const override;

private:
    RequestFunction requestFunction_ = nullptr;
    ClientFunction clientFunction_ = nullptr;
};

}  // namespace Varnex
