// open_url [--policy FOLDER] [--memory | --disk] URL: writes what the URL stands for to standard output, its type and
// its length to standard error; reads it as a stream, into the memory, or as a file. With --policy the URL is taken for
// one from a stranger, who may see the files below the folder.
#include "common/counter_scheme.h"

#include <Varnex/url/URL.h>
#include <Varnex/url/URLLocalFile.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLPolicy.h>
#include <Varnex/url/URLStream.h>

#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using Varnex::URL;
using Varnex::URLImpl;

namespace {

void tell(const std::string& mimeType, int size) {
    std::cerr << (mimeType.empty() ? "unknown type" : mimeType) << ", ";
    if (size < 0)
        std::cerr << "unknown length\n";
    else
        std::cerr << size << " bytes\n";
}

// False: the source broke; where it can tell so, that is the badbit.
bool copy(std::istream& from, std::ostream& to) {
    char block[16384];
    while (from.read(block, sizeof block), from.gcount() > 0) to.write(block, from.gcount());
    return !from.bad();
}

bool showStream(const URL& url) {
    const std::unique_ptr<URLImpl::Stream> stream(url->open());
    tell(stream->getMimeType(), stream->getContentLength());
    return copy(*stream, std::cout);
}

bool showMemory(const URL& url) {
    const URLImpl::Memory memory = url->read2mem();
    tell(memory.getMimeType(), memory.getSize());
    std::cout.write(memory.getData(), memory.getSize());
    return true;
}

bool showFile(const URL& url) {
    const URLImpl::File file = url->read2disk();  // a temporary one goes with the object
    tell(file.getMimeType(), file.getSize());
    std::ifstream stream(file.getName(), std::ios_base::binary);
    return stream.is_open() && copy(stream, std::cout);
}

void distrust(const std::string& folder) {
    const auto policy = std::make_shared<Varnex::URLPolicy>();
    policy->setAllowedSchemes({"data", "file", "zip", "http", "https"});
    policy->setFileRoot(folder);
    policy->setPublicHostsOnly(true);
    policy->setMaxSize(16 << 20);
    Varnex::URLPolicy::setCurrent(policy);
}

}  // namespace

int main(int argc, char** argv) try {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    counter_scheme_register();
    if (arguments.size() > 2 && arguments[0] == "--policy") {
        distrust(arguments[1]);
        arguments.erase(arguments.begin(), arguments.begin() + 2);
    }
    const std::string way = arguments.size() == 2 ? arguments[0] : "";
    const auto show = way == "--memory" ? showMemory : way == "--disk" ? showFile : showStream;
    if (arguments.empty() || arguments.size() > 2 || (show == showStream) != way.empty()) {
        std::cerr << "usage: open_url [--policy FOLDER] [--memory | --disk] URL\n";
        return 2;
    }
    const URL url = URL::resolve(URL(), arguments.back());  // without a scheme it is the name of a file
    if (!url) {
        std::cerr << "open_url: not a URL of a known scheme\n";
        return 1;
    }
    return show(url) && std::cout.flush() ? 0 : 1;
} catch (const URLImpl::Exception& error) {
    std::cerr << "open_url: " << error.what() << '\n';
    return 1;
}
