#include <Varnex/web/WebPageFileSystem.h>

#include <Varnex/web/ConfinedFile.h>
#include <Varnex/web/FilePage.h>

#include <utility>

namespace Varnex {

WebPageFileSystem::WebPageFileSystem(std::string prefix, std::string root)
    : prefix_(std::move(prefix)), root_(std::move(root)) {}

WebPageFileSystem::~WebPageFileSystem() = default;

bool WebPageFileSystem::create(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) {
    if (!request.uri.starts_with(prefix_)) return false;
    const std::string rest = request.uri.substr(prefix_.size()), path = root_ + rest;
    const UniqueFd file = confined_ ? openBeneath(FolderFd(root_), rest) : FilePage::open(path);
    return FilePage::create(file, path, maxFileSize_, reply);
}

WebPageFileSystem* WebPageFileSystem::clone() const {
    return new WebPageFileSystem(*this);
}

}  // namespace Varnex
