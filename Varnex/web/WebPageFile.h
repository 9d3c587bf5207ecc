#pragma once

#include <Varnex/web/WebPage.h>

#include <string>

namespace Varnex {

/// A regular file, read anew for each request, with the type that its name tells. The request is not looked at.
class VARNEX_API WebPageFile : public WebPage {
public:
    explicit WebPageFile(std::string path);
    ~WebPageFile() override;

    /// A larger file is no reply, as one that cannot be read; 0, the default: no limit.
    void setMaxFileSize(unsigned long bytes) { maxFileSize_ = bytes; }

    using WebPage::create;
    bool create(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) override;
    [[nodiscard]] WebPageFile* clone() const override;

private:
    std::string path_;
    unsigned long maxFileSize_ = 0;
};

}  // namespace Varnex
