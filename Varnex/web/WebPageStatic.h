#pragma once

#include <Varnex/web/WebPage.h>

#include <cstdint>
#include <string>

namespace Varnex {

/// Bytes in memory.
class VARNEX_API WebPageStatic : public WebPage {
public:
    /// The `size` bytes stay the caller's and outlive the page and all its clones.
    WebPageStatic(const void* data, std::uint32_t size, std::string contentType, unsigned long status = 200);
    ~WebPageStatic() override;

    using WebPage::create;
    bool create(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) override;
    [[nodiscard]] WebPageStatic* clone() const override;

private:
    const char* data_;
    std::uint32_t size_;
    std::string contentType_;
    unsigned long status_;
};

}  // namespace Varnex
