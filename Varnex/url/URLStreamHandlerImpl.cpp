#include <Varnex/url/URLStreamHandlerImpl.h>

#include <Varnex/protocols/MimeTypes.h>
#include <Varnex/url/CText.h>
#include <Varnex/url/URLPolicy.h>
#include <Varnex/url/URLStream.h>
#include <Varnex/url/URLStreamHandlerBuf.h>

#include <utility>

namespace Varnex {

namespace {

std::string mimeTypeOf(QX_URLStream* stream, const QX_URL& url) {
    if (stream->getMimeType != nullptr) return orEmpty(CText(stream->getMimeType(stream)).get());
    return url.path == nullptr ? "" : MimeTypes::identify(url.path);
}

}  // namespace

URLStreamHandlerImpl::URLStreamHandlerImpl(UrlRecord record) : URLImpl(""), url_(std::move(record)) {}

URLStreamHandlerImpl::~URLStreamHandlerImpl() = default;

std::string URLStreamHandlerImpl::getScheme() const {
    return url_->scheme;
}

int URLStreamHandlerImpl::getDefaultPort() const {
    const auto* const handler = url_->handler;
    return handler->getDefaultPort == nullptr ? -1 : handler->getDefaultPort();
}

std::string URLStreamHandlerImpl::toString() const {
    if (url_->handler->toString == nullptr) return printParts();
    const CText text(url_->handler->toString(url_.get()));
    return text == nullptr ? printParts() : text.get();
}

std::string URLStreamHandlerImpl::printParts() const {
    std::string text = getScheme() + "://";
    if (const std::string user = orEmpty(url_->userInfo); !user.empty()) text += user + "@";
    text += orEmpty(url_->host);
    if (url_->port >= 0 && url_->port != getDefaultPort()) text += ":" + std::to_string(url_->port);
    text += orEmpty(url_->path);
    if (url_->query != nullptr) text.append("?").append(url_->query);
    if (url_->fragment != nullptr) text.append("#").append(url_->fragment);
    return text;
}

std::string URLStreamHandlerImpl::toRelativeString(const URLImpl&) const {
    return toString();
}

URLImpl::Stream* URLStreamHandlerImpl::open() const {
    checkPolicy();
    URLPolicy::getCurrent()->checkHost(orEmpty(url_->host));
    if (url_->handler->open == nullptr) throw Exception("");
    URLStreamHandlerBuf::OwnedStream owned(url_->handler->open(url_.get()));
    if (owned == nullptr) throw Exception("");
    QX_URLStream* const stream = owned.get();
    auto buffer = std::make_unique<URLStreamHandlerBuf>(std::move(owned));
    if (stream->start != nullptr) stream->start(stream);
    const int length = stream->getContentLength == nullptr ? -1 : stream->getContentLength(stream);
    return makeStream(std::move(buffer), mimeTypeOf(stream, *url_.get()), length);
}

URLStreamHandlerImpl* URLStreamHandlerImpl::createRelative(const std::string& text) const {
    UrlRecord record(url_->scheme, url_->handler);
    return record.parseRelative(url_, text) ? new URLStreamHandlerImpl(std::move(record)) : nullptr;
}

std::string URLStreamHandlerImpl::getName() const {
    const std::string path = orEmpty(url_->path);
    return path.substr(path.find_last_of("/\\") + 1);
}

}  // namespace Varnex
