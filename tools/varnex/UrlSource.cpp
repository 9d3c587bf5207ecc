#include "UrlSource.h"

#include "Failure.h"
#include "Quote.h"
#include "UrlArgument.h"

#include <Varnex/url/URLFTP.h>
#include <Varnex/url/URLZip.h>
#include <Varnex/url/openURL.h>

#include <exception>
#include <memory>
#include <utility>

namespace VarnexTool {

using Varnex::LoadedStream;
using Varnex::ProtocolHTTP;
using Varnex::URLImpl;

namespace {

enum Status : unsigned long { Successful = 200, PartialContent = 206, Redirection = 300, RangeNotSatisfiable = 416 };

/// Bytes of the whole that a Content-Range tells; -1: none.
long long wholeLength(const ProtocolHTTP::Reply& reply) {
    const std::string range = reply.header.getParam("Content-Range");
    unsigned long pos = range.find('/') + 1, length = 0;
    if (pos == 0 || !ProtocolHTTP::parseNumber(range, pos, 10, length)) return -1;
    return static_cast<long long>(length);
}

}  // namespace

UrlSource::UrlSource(const std::string& text) : text_(text), url_(resolveUrl({}, text)), block_(kBlockSize, '\0') {}

bool UrlSource::isHttp() const {
    return url_->getScheme() == "http" || url_->getScheme() == "https";
}

bool UrlSource::isServer() const {
    return isHttp() || url_->getScheme() == "ftp";
}

/// Its line ends change on the way, so that a place here is none there.
bool UrlSource::isText() const {
    const auto* const ftp = dynamic_cast<const Varnex::URLFTP*>(url_.get());
    return ftp != nullptr && ftp->getTypeCode() == 'a';
}

std::string UrlSource::file() const {
    const URLImpl* url = url_.get();
    while (const auto* const zip = dynamic_cast<const Varnex::URLZip*>(url)) url = zip->getArchive().get();
    return url->getScheme() == "file" ? url->getPath() : "";
}

void UrlSource::open(const Varnex::LoadOptions& options) {
    try {
        if (isServer()) return openServer(options);
        auto ofArchive = std::make_shared<Varnex::LoadOptions>(options);
        ofArchive->offset = 0;
        Varnex::LoadOptions::setCurrent(std::move(ofArchive));
        stream_.reset(url_->open());
        length_ = stream_->getContentLength();
    } catch (const Varnex::LoadError& error) {
        fail(error.getReason());
    } catch (const URLImpl::Exception& error) {
        fail(wordsOf(error, "cannot be opened"));
    }
}

void UrlSource::openServer(const Varnex::LoadOptions& options) {
    const auto ours = std::make_shared<Varnex::LoadOptions>(options);
    if (isText()) ours->offset = 0;
    auto stream = Varnex::openURL(url_->toString(), url_->getPath(), ours);
    loaded_ = stream.get();
    stream_ = std::move(stream);
    block_.resize(kServerBlockSize);
    asked_ = ours->offset;
    const unsigned long code = answer()->reply.code;
    beginAt(asked_ > 0 && (code == 0 || code == PartialContent) ? asked_ : 0);
}

void UrlSource::beginAt(long long offset) {
    position_ = offset;
    if (answer()->length >= 0) length_ = offset + answer()->length;
    if (offset == 0) return;
    if (answer()->offset != offset)
        fail("the server does not go on at byte " + std::to_string(offset) + ", which it was asked for");
    if (const long long whole = wholeLength(answer()->reply); whole >= 0) length_ = whole;
}

const LoadedStream::Answer* UrlSource::answer() const {
    return loaded_ == nullptr ? nullptr : &loaded_->getAnswer();
}

const std::string& UrlSource::head() const {
    static const std::string none;
    return loaded_ == nullptr ? none : answer()->head;
}

std::string UrlSource::refusal() const {
    const unsigned long code = loaded_ == nullptr ? 0 : answer()->reply.code;
    if (code == 0 || (code >= Successful && code < Redirection)) return "";
    const std::string& phrase = answer()->reply.phrase;
    return std::to_string(code) + " " + (phrase.empty() ? ProtocolHTTP::getStatusPhrase(code) : escaped(phrase));
}

bool UrlSource::isComplete() const {
    if (asked_ == 0) return false;
    const ProtocolHTTP::Reply& reply = answer()->reply;
    if (reply.code == 0) return answer()->length == 0;
    return reply.code == RangeNotSatisfiable && wholeLength(reply) == asked_;
}

std::string_view UrlSource::next() {
    const std::size_t n = loaded_ == nullptr ? read() : readServer();
    position_ += static_cast<long long>(n);
    if (n == 0 && position_ < length())
        fail("ended after " + std::to_string(position_) + " of " + std::to_string(length()) + " bytes");
    return std::string_view(block_).substr(0, n);
}

std::size_t UrlSource::readServer() {
    try {
        return static_cast<std::size_t>(loaded_->readSome(block_.data(), std::ssize(block_)));
    } catch (const URLImpl::Exception& error) {
        failOnTheWay(wordsOf(error, "broken off"));
    }
}

std::size_t UrlSource::read() {
    if (!isBroken_) {
        stream_->clear();  // a short block need not be the last
        stream_->read(block_.data(), std::ssize(block_));
        isBroken_ = stream_->bad();
        if (!isBroken_ || stream_->gcount() > 0) return static_cast<std::size_t>(stream_->gcount());
    }
    failOnTheWay(whyBroken());
}

/// The stream keeps the words to itself, so what broke it is met once more.
std::string UrlSource::whyBroken() {
    std::string words = "broken off";
    try {
        stream_->clear();
        stream_->exceptions(std::ios_base::badbit);
        stream_->read(block_.data(), std::ssize(block_));
    } catch (const URLImpl::Exception& error) {
        words = wordsOf(error, words);
    } catch (const std::exception&) {  // says nothing about the resource
    }
    return words;
}

void UrlSource::failOnTheWay(const std::string& words) const {
    fail(words + " after " + std::to_string(position_) + " bytes");
}

void UrlSource::fail(const std::string& words) const {
    throw Failure(urlInQuotes(text_) + ": " + words);
}

}  // namespace VarnexTool
