#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/LoadedStream.h>
#include <Varnex/url/URLImpl.h>

#include <memory>
#include <string>

namespace Varnex {

struct LoadOptions;

/// Why a server gave no answer. The message is empty: that is what opening a URL promises.
class VARNEX_API LoadError : public URLImpl::Exception {
public:
    explicit LoadError(std::string reason);
    ~LoadError() override;

    [[nodiscard]] const std::string& getReason() const { return reason_; }

private:
    std::string reason_;
};

/// Loads the text of an "http:", "https:" or "ftp:" URL: returns when there is an answer, of whatever status; the
/// caller owns the stream. `path`, percent-encoded: tells the MIME type where the server does not. Throws `LoadError`,
/// and `URLImpl::Exception` when the policy refuses.
[[nodiscard]] VARNEX_API URLImpl::Stream* openURL(const std::string& url, const std::string& path);
[[nodiscard]] VARNEX_API std::unique_ptr<LoadedStream> openURL(const std::string& url, const std::string& path,
                                                               std::shared_ptr<const LoadOptions> options);

}  // namespace Varnex
