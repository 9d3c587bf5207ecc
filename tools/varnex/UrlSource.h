#pragma once

#include <Varnex/url/LoadOptions.h>
#include <Varnex/url/LoadedStream.h>
#include <Varnex/url/URL.h>
#include <Varnex/url/URLStream.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace VarnexTool {

/// A URL of the command line that is opened once and read block by block. Failures throw `Failure` with the URL, but
/// without a password in it. One thread.
class UrlSource {
public:
    /// `text`: as the user wrote it; relative to the working directory.
    explicit UrlSource(const std::string& text);

    /// Whether a server answers with a status and a header.
    [[nodiscard]] bool isHttp() const;
    /// The local file that the bytes are read from, also of an archive; empty: there is none.
    [[nodiscard]] std::string file() const;

    /// `options`: of servers. Their offset counts for "http:", "https:" and "ftp:", as far as the server goes along;
    /// one that begins at yet another byte is a failure, a status that tells of one is not.
    void open(const Varnex::LoadOptions& options = {});

    // Of what is open:

    /// The status line and the header as they came; empty: there are none.
    [[nodiscard]] const std::string& head() const;
    /// Such as "404 Not Found" where the status tells that this is not what was asked for; empty otherwise.
    [[nodiscard]] std::string refusal() const;
    /// Whether nothing is left behind the asked offset.
    [[nodiscard]] bool isComplete() const;
    /// Empty: not known.
    [[nodiscard]] const std::string& mimeType() const { return stream_->getMimeType(); }
    /// Bytes of the whole; -1: not known.
    [[nodiscard]] long long length() const { return length_; }
    /// The place in the whole of the next byte.
    [[nodiscard]] long long position() const { return position_; }

    /// The next bytes, as soon as there are some, valid until the next call; none only at the end. Less than the
    /// announced length is a failure.
    [[nodiscard]] std::string_view next();

    [[noreturn]] void fail(const std::string& words) const;

private:
    static constexpr std::size_t kBlockSize = 65'536;
    static constexpr std::size_t kServerBlockSize = 131'072;  // what the loader receives at once

    [[nodiscard]] bool isServer() const;
    [[nodiscard]] bool isText() const;
    void openServer(const Varnex::LoadOptions& options);
    void beginAt(long long offset);
    [[nodiscard]] const Varnex::LoadedStream::Answer* answer() const;
    [[nodiscard]] std::size_t read();
    [[nodiscard]] std::size_t readServer();
    [[nodiscard]] std::string whyBroken();
    [[noreturn]] void failOnTheWay(const std::string& words) const;

    std::string text_;
    Varnex::URL url_;
    std::unique_ptr<Varnex::URLImpl::Stream> stream_;
    Varnex::LoadedStream* loaded_ = nullptr;  // the same, from a server
    std::string block_;
    long long asked_ = 0;  // the offset
    long long position_ = 0;
    long long length_ = -1;
    bool isBroken_ = false;
};

}  // namespace VarnexTool
