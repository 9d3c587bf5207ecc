#include <Varnex/url/openURL.h>

#include <Varnex/protocols/MimeTypes.h>
#include <Varnex/url/CurlTransfer.h>
#include <Varnex/url/Fetch.h>
#include <Varnex/url/LoadOptions.h>
#include <Varnex/url/URLbuf.h>
#include <Varnex/url/UrlParts.h>

#include <string_view>
#include <utility>

namespace Varnex {

namespace {

constexpr std::string_view kRangeUnit = "bytes ";
constexpr unsigned long kPartialContent = 206;

/// Where the part begins that the reply carries.
long long offsetOf(const ProtocolHTTP::Reply& reply) {
    const std::string range = reply.header.getParam("Content-Range");
    unsigned long pos = kRangeUnit.size(), offset = 0;
    if (reply.code != kPartialContent || !range.starts_with(kRangeUnit)) return 0;
    return ProtocolHTTP::parseNumber(range, pos, 10, offset) ? static_cast<long long>(offset) : 0;
}

LoadedStream::Answer answerOf(const CurlTransfer& transfer, const ConnectionDelegate& delegate, long long offset) {
    const ProtocolHTTP::Reply& reply = transfer.getHead().getReply();
    return {transfer.getUrl(), reply, transfer.getHead().getText(), reply.code == 0 ? offset : offsetOf(reply),
            delegate.getContentLength()};
}

}  // namespace

LoadError::LoadError(std::string reason) : Exception(""), reason_(std::move(reason)) {}

LoadError::~LoadError() = default;

URLImpl::Stream* openURL(const std::string& url, const std::string& path) {
    return openURL(url, path, LoadOptions::getCurrent()).release();
}

std::unique_ptr<LoadedStream> openURL(const std::string& url, const std::string& path,
                                      std::shared_ptr<const LoadOptions> options) {
    if (options == nullptr) options = LoadOptions::getCurrent();
    auto delegate = std::make_unique<ConnectionDelegate>();
    auto transfer = std::make_unique<CurlTransfer>(url, options, *delegate);
    transfer->run(&ConnectionDelegate::hasAnswer);
    if (!delegate->hasResponse()) {
        transfer->raiseRefusal();
        throw LoadError(delegate->getReason());
    }
    std::string type = delegate->getMimeType();
    if (type.empty()) type = MimeTypes::identify(UrlParts::decoded(path));
    auto answer = answerOf(*transfer, *delegate, options->offset);
    auto buffer = underPolicy(std::make_unique<URLbuf>(std::move(delegate), std::move(transfer)), answer.length);
    return std::make_unique<LoadedStream>(std::move(buffer), std::move(type), std::move(answer));
}

}  // namespace Varnex
