#pragma once

#include <Varnex/url/URL.h>
#include <Varnex/url/URLStream.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace VarnexTool {

/// An open URL of the command line that is read block by block. Failures throw `Failure` with the URL. One thread.
class UrlSource {
public:
    /// `text`: as the user wrote it; relative to the working directory.
    explicit UrlSource(const std::string& text);

    /// Empty: not known.
    [[nodiscard]] const std::string& mimeType() const { return stream_->getMimeType(); }
    /// Bytes of the whole; -1: not known.
    [[nodiscard]] long long length() const { return stream_->getContentLength(); }
    /// The local file that the bytes are read from, also of an archive; empty: there is none.
    [[nodiscard]] std::string file() const;

    /// The next bytes, valid until the next call; none only at the end. Less than the announced length is a failure.
    [[nodiscard]] std::string_view next();

private:
    static constexpr std::size_t kBlockSize = 65536;

    [[nodiscard]] std::size_t read();
    [[nodiscard]] std::string whyBroken();
    [[noreturn]] void fail(const std::string& words) const;

    std::string text_;
    Varnex::URL url_;
    std::unique_ptr<Varnex::URLImpl::Stream> stream_;
    std::string block_;
    long long received_ = 0;
    bool isBroken_ = false;
};

}  // namespace VarnexTool
