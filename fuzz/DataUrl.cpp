// The text is what follows "data:".

#include <Varnex/url/URL.h>
#include <Varnex/url/URLData.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLStream.h>
#include <fuzz/Pieces.h>

#include <memory>

using namespace Varnex;

namespace {

/// Null: refused, which happens to texts without a comma only.
URL parse(const std::string& text) try {
    return URL(URLData::createAbsolute("data", text));
} catch (const URLImpl::Exception&) {
    Fuzz::check(text.find(',') == std::string::npos);
    return {};
}

std::string_view bytesOf(const URLImpl::Memory& memory) {
    return {memory.getData(), static_cast<std::size_t>(memory.getSize())};
}

void checkInput(std::uint8_t, Fuzz::Sizes, std::string_view text) {
    const URL url = parse(std::string(text));
    if (!url) return;
    const URLImpl::Memory memory = url->read2mem();
    const std::unique_ptr<URLImpl::Stream> stream(url->open());
    Fuzz::check(stream->getContentLength() == memory.getSize() && stream->getMimeType() == memory.getMimeType());
    Fuzz::check(Fuzz::read(*stream->rdbuf(), Fuzz::Sizes(Fuzz::kLargest)) == bytesOf(memory));

    const std::string printed = url->toString();
    const bool isBase64 = printed.find(";base64,") < printed.find(',');
    if (!isBase64 && text.find('\0') != std::string_view::npos) return;  // prints as "%00", which stays
    const URL again = parse(printed.substr(printed.find(':') + 1));
    const URLImpl::Memory same = again->read2mem();
    Fuzz::check(bytesOf(same) == bytesOf(memory) && same.getMimeType() == memory.getMimeType());
    Fuzz::check(again->toString() == printed && URL::resolve({}, printed)->toString() == printed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
