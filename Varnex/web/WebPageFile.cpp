#include <Varnex/web/WebPageFile.h>

#include <Varnex/web/FilePage.h>

#include <utility>

namespace Varnex {

WebPageFile::WebPageFile(std::string path) : path_(std::move(path)) {}

WebPageFile::~WebPageFile() = default;

bool WebPageFile::create(const ProtocolHTTP::Request&, ProtocolHTTP::Reply& reply) {
    return FilePage::create(FilePage::open(path_), path_, maxFileSize_, reply);
}

WebPageFile* WebPageFile::clone() const {
    return new WebPageFile(*this);
}

}  // namespace Varnex
