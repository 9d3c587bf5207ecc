#include <Varnex/url/URLPolicy.h>

#include <Varnex/transport/Exception.h>
#include <Varnex/transport/LowerCase.h>
#include <Varnex/transport/SocketAddress.h>
#include <Varnex/transport/SystemError.h>
#include <Varnex/url/CText.h>
#include <Varnex/url/PublicAddress.h>
#include <Varnex/url/SharedCurrent.h>
#include <Varnex/url/URLImpl.h>
#include <Varnex/url/UrlParts.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

namespace Varnex {

namespace {

/// No host has one, but some readers of addresses stop there.
bool hasBlank(std::string_view host) {
    return std::any_of(host.begin(), host.end(), [](unsigned char c) { return c <= ' ' || c == 0x7F; });
}

/// In lower case, without brackets, the zone of an IPv6 address, and the dot that can end a name.
std::string bareHost(std::string host) {
    if (host.size() >= 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
    if (host.find(':') != std::string::npos) host.resize(std::min(host.find('%'), host.size()));
    if (host.ends_with('.')) host.pop_back();
    makeLowerCase(host);
    return host;
}

/// What the system takes for an address without looking it up; there is at most one.
std::vector<SocketAddress> numericAddress(const std::string& host) {
    std::vector<SocketAddress> found;
    try {
        SocketAddress::resolve(host, "", SocketAddress::NumericHost, SocketAddress::Stream, SocketAddress::TCP, found);
    } catch (const Exception&) {
        found.clear();  // a name
    }
    return found;
}

[[noreturn]] void refuse() {
    throw URLImpl::Exception("Open error - not allowed by the URL policy");
}

bool isNameOfThisMachine(const std::string& name) {
    return name == "localhost" || name.ends_with(".localhost");
}

bool isPublicHost(const std::string& host) {
    const std::string name = bareHost(host);
    if (hasBlank(host) || isNameOfThisMachine(name)) return false;
    for (const SocketAddress& address : numericAddress(name))
        if (!isPublicAddress(*address.getAddress())) return false;
    return true;
}

}  // namespace

URLPolicy::~URLPolicy() = default;

void URLPolicy::setFileRoot(const std::string& folder) {
    fileRoot_.clear();
    if (folder.empty()) return;
    const CText path(::realpath(folder.c_str(), nullptr));
    if (path == nullptr) throw URLImpl::Exception(withErrno("Cannot find folder " + folder, errno));
    fileRoot_ = path.get();
    if (!fileRoot_.ends_with('/')) fileRoot_ += '/';
}

void URLPolicy::check(const URLImpl& url) const {
    if (!schemes_.empty() && !schemes_.contains(url.getScheme())) refuse();
    checkHost(url.getHost());
}

void URLPolicy::checkHost(const std::string& host) const {
    if (!allowsHost(host)) refuse();
}

void URLPolicy::checkAddress(const sockaddr& address) const {
    if (!allowsAddress(address)) refuse();
}

bool URLPolicy::allowsHost(const std::string& host) const {
    if (!publicHostsOnly_ || host.empty()) return true;
    return isPublicHost(host) && isPublicHost(UrlParts::decoded(host));
}

bool URLPolicy::allowsAddress(const sockaddr& address) const {
    return !publicHostsOnly_ || isPublicAddress(address);
}

bool URLPolicy::allowsFile(const std::string& path) const {
    return path.starts_with(fileRoot_);
}

void URLPolicy::checkSize(long long bytes) const {
    if (maxSize_ > 0 && bytes > maxSize_) refuseSize();
}

void URLPolicy::refuseSize() {
    throw URLImpl::Exception("Open error - larger than the URL policy allows");
}

void URLPolicy::setCurrent(std::shared_ptr<const URLPolicy> policy) {
    SharedCurrent<URLPolicy>::instance().set(std::move(policy));
}

std::shared_ptr<const URLPolicy> URLPolicy::getCurrent() {
    return SharedCurrent<URLPolicy>::instance().get();
}

}  // namespace Varnex
