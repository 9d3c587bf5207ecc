#include "UrlSource.h"

#include "Failure.h"
#include "UrlArgument.h"

#include <Varnex/url/URLZip.h>

#include <exception>

namespace VarnexTool {

using Varnex::URLImpl;

UrlSource::UrlSource(const std::string& text) : text_(text), url_(resolveUrl({}, text)), block_(kBlockSize, '\0') {
    try {
        stream_.reset(url_->open());
    } catch (const URLImpl::Exception& error) {
        fail(wordsOf(error, "cannot be opened"));
    }
}

std::string UrlSource::file() const {
    const URLImpl* url = url_.get();
    while (const auto* const zip = dynamic_cast<const Varnex::URLZip*>(url)) url = zip->getArchive().get();
    return url->getScheme() == "file" ? url->getPath() : "";
}

std::string_view UrlSource::next() {
    const std::size_t n = read();
    received_ += static_cast<long long>(n);
    if (n == 0 && received_ < length())
        fail("ended after " + std::to_string(received_) + " of " + std::to_string(length()) + " bytes");
    return std::string_view(block_).substr(0, n);
}

std::size_t UrlSource::read() {
    if (!isBroken_) {
        stream_->clear();  // a short block need not be the last
        stream_->read(block_.data(), std::ssize(block_));
        isBroken_ = stream_->bad();
        if (!isBroken_ || stream_->gcount() > 0) return static_cast<std::size_t>(stream_->gcount());
    }
    fail(whyBroken() + " after " + std::to_string(received_) + " bytes");
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

void UrlSource::fail(const std::string& words) const {
    throw Failure(urlInQuotes(text_) + ": " + words);
}

}  // namespace VarnexTool
