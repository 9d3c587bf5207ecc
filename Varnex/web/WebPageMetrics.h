#pragma once

#include <Varnex/web/WebPage.h>

#include <chrono>
#include <memory>

namespace Varnex {

class WebStatistics;

/// What a web server has done, as text that monitors read (the Prometheus format): counts, rates since the start, and
/// how long replies took.
class VARNEX_API WebPageMetrics : public WebPage {
public:
    /// See `WebServer::getStatistics`. Not null.
    explicit WebPageMetrics(std::shared_ptr<const WebStatistics> statistics);
    ~WebPageMetrics() override;

    using WebPage::create;
    bool create(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) override;
    [[nodiscard]] WebPageMetrics* clone() const override;

private:
    std::shared_ptr<const WebStatistics> statistics_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

}  // namespace Varnex
