#include "show_url.h"

#include <Varnex/url/URL.h>
#include <Varnex/url/URLStream.h>

#include <exception>
#include <iostream>
#include <memory>

namespace {

int fail(const char* text, const char* reason) {
    std::cerr << "counter_host: " << text << ": " << reason << '\n';
    return 0;
}

}  // namespace

// No exception gets into C.
int show_url(const char* base, const char* text) try {
    using Varnex::URL;
    const URL url = URL::resolve(URL::resolve(URL(), base), text);
    if (!url) return fail(text, "not a URL of a known scheme");
    const std::unique_ptr<Varnex::URLImpl::Stream> stream(url->open());
    std::cout << url->toString() << ": " << stream->getMimeType() << ", " << stream->getContentLength() << " bytes\n";
    char block[4096];
    while (stream->read(block, sizeof block), stream->gcount() > 0) std::cout.write(block, stream->gcount());
    if (!std::cout.flush()) return fail(text, "cannot write");
    return stream->bad() ? fail(text, "cannot read on") : 1;
} catch (const Varnex::URLImpl::Exception& error) {
    return fail(text, error.what());
} catch (const std::exception& error) {
    return fail(text, error.what());
}
