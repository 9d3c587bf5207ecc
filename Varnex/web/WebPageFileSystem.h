#pragma once

#include <Varnex/web/WebPage.h>

#include <string>

namespace Varnex {

/// Regular files whose paths are the request's URI with another beginning.
///
/// WARNING: the URI is used as it came, ".." and all, so that clients reach every file that this process can read.
/// Confine the page, see below, or use a `WebPageDirectory`, unless all clients may.
class VARNEX_API WebPageFileSystem : public WebPage {
public:
    /// "/files/" and "/srv/data/" make "/srv/data/a.png" of "/files/a.png"; nothing is put between the two pieces.
    WebPageFileSystem(std::string prefix, std::string root);
    ~WebPageFileSystem() override;

    /// Whether nothing outside the folder `root` is served, not even through symbolic links. False at first.
    void setConfined(bool on) { confined_ = on; }
    /// A larger file is no reply, as one that cannot be read; 0, the default: no limit.
    void setMaxFileSize(unsigned long bytes) { maxFileSize_ = bytes; }

    using WebPage::create;
    bool create(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) override;
    [[nodiscard]] WebPageFileSystem* clone() const override;

private:
    std::string prefix_;
    std::string root_;
    bool confined_ = false;
    unsigned long maxFileSize_ = 0;
};

}  // namespace Varnex
