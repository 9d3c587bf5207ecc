#include <Varnex/url/URLData.h>

#include <Varnex/streams/Base64.h>
#include <Varnex/streams/obase64decodestream.h>
#include <Varnex/url/ContentInURL.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLStream.h>
#include <Varnex/url/UrlParts.h>

#include <sstream>
#include <string_view>
#include <utility>

namespace Varnex {

namespace {

constexpr std::string_view kBase64Mark = ";base64";

std::string fromBase64(const std::string& text) {
    std::ostringstream bytes;
    obase64decodestream(bytes).write(text.data(), static_cast<std::streamsize>(text.size()));
    return std::move(bytes).str();
}

std::string toBase64(const std::string& bytes) {
    std::string text(encodedBase64Size(bytes.size()), '\0');
    encodeBase64(text.data(), bytes.data(), bytes.size());
    return text;
}

}  // namespace

URLData::URLData(std::string data, std::string mimeType, bool base64)
    : URLImpl(""),
      data_(std::move(data)),
      mimeType_(mimeType.empty() ? "text/plain" : std::move(mimeType)),
      base64_(base64) {}

URLData::~URLData() = default;

URLImpl* URLData::createAbsolute(const std::string&, const std::string& rest) {
    const std::size_t comma = rest.find(',');
    if (comma == std::string::npos) throw Exception("Invalid data URL");
    std::string mimeType = rest.substr(0, comma), content = rest.substr(comma + 1);
    const bool isBase64 = mimeType.ends_with(kBase64Mark);
    if (isBase64) mimeType.resize(mimeType.size() - kBase64Mark.size());
    content = isBase64 ? fromBase64(content) : UrlParts::decoded(std::move(content));
    return new URLData(std::move(content), std::move(mimeType), isBase64);
}

std::string URLData::getScheme() const {
    return "data";
}

std::string URLData::toString() const {
    std::string text = "data:" + mimeType_;
    if (base64_) return text.append(kBase64Mark) + "," + toBase64(data_);
    std::string content = data_;
    encodeUnsafeCharacters(content);
    return text + "," + content;
}

std::string URLData::toRelativeString(const URLImpl&) const {
    return toString();
}

URLImpl::Stream* URLData::open() const {
    checkPolicy();
    return makeStream(std::make_unique<std::stringbuf>(data_, std::ios_base::in), mimeType_, std::ssize(data_));
}

URLImpl::Memory URLData::read2mem() const {
    checkPolicy();
    return memoryOf(data_, mimeType_);
}

URLImpl* URLData::createRelative(const std::string&) const {
    throw Exception("Parse error - A data URL cannot be a base for a relative URL");
}

}  // namespace Varnex
