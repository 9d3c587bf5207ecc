#include <Varnex/url/URLFile.h>

#include <Varnex/protocols/MimeTypes.h>
#include <Varnex/url/FileBuf.h>
#include <Varnex/url/RegularFile.h>
#include <Varnex/url/URLLocalFile.h>
#include <Varnex/url/URLPolicy.h>
#include <Varnex/url/URLStream.h>
#include <Varnex/url/UrlParts.h>

#include <utility>

#include <unistd.h>

namespace Varnex {

using namespace UrlParts;

namespace {

constexpr std::size_t kWorkingDirectorySize = 512;

/// Empty when it does not fit.
std::string workingDirectory() {
    char path[kWorkingDirectorySize];
    return ::getcwd(path, sizeof path) == nullptr ? "" : path;
}

std::string workingDirectoryPath() {
    std::string path = workingDirectory();
    URLImpl::encodeUnsafeCharacters(path, ":/");
    if (!path.ends_with('/')) path += '/';
    return path;
}

std::string hostOf(const std::string& authority) {
    return comparableHost(authority) == "localhost" ? "" : authority;
}

}  // namespace

URLFile::URLFile() : URLFile("", workingDirectoryPath(), "") {}

URLFile::URLFile(std::string host, std::string path, std::string newFragment)
    : URLImpl(std::move(newFragment)), host_(std::move(host)), path_(std::move(path)) {}

URLFile::~URLFile() = default;

URLImpl* URLFile::createAbsolute(const std::string&, const std::string& text) {
    std::string rest = text, authority, path, newFragment;
    if (!parseAuthority(rest, authority)) throw Exception("Parse error - missing authority");
    parsePath(rest, path);
    refuseQuery(rest);
    parseFragment(rest, newFragment);
    normalisePath(path);
    if (path.empty()) path = "/";
    return new URLFile(hostOf(authority), std::move(path), std::move(newFragment));
}

URLFile* URLFile::createRelative(const std::string& text) const {
    Reference parts = parseReference(text);
    if (parts.hasPath)
        mergePath(parts.path, path_);
    else
        parts.path = parts.hasAuthority ? "/" : path_;
    return new URLFile(parts.hasAuthority ? hostOf(parts.authority) : host_, std::move(parts.path),
                       std::move(parts.fragment));
}

std::string URLFile::getScheme() const {
    return "file";
}

std::string URLFile::toString() const {
    return "file://" + host_ + path_ + withHash(fragment);
}

std::string URLFile::toRelativeString(const URLImpl& base) const {
    const auto* const other = dynamic_cast<const URLFile*>(&base);
    if (other == nullptr) return toString();
    std::string way = path_;
    if (host_ == other->host_)
        makePathRelative(way, other->path_);
    else
        way = "//" + host_ + path_;
    return way + withHash(fragment);
}

std::string URLFile::pathToOpen() const {
    checkPolicy();
    if (!host_.empty()) throw Exception("Open error - do not know how to handle host");
    // No file name has a NUL, and none is to be taken for one that has "%00" in its name.
    if (path_.find("%00") != std::string::npos) throw Exception("Open error - cannot open file");
    return getPath();
}

URLImpl::Stream* URLFile::open() const {
    const std::string path = pathToOpen();
    RegularFile file = openRegularFile(path);
    const long long size = file.size;
    return makeStream(std::make_unique<FileBuf>(std::move(file)), MimeTypes::identify(path), size);
}

URLImpl::File URLFile::read2disk() const {
    std::string path = pathToOpen();
    const long long size = openRegularFile(path).size;
    URLPolicy::getCurrent()->checkSize(size);
    return {MimeTypes::identify(path), size, std::move(path), false};
}

std::string URLFile::getHost() const {
    return decoded(host_);
}

std::string URLFile::getPath() const {
    return decoded(path_);
}

std::string URLFile::getName() const {
    return lastSegment(path_);
}

URLFile* URLFile::getBase() const {
    return new URLFile(host_, directory(path_), "");
}

bool URLFile::refersToSameFileAs(const URLImpl& other) const {
    const auto* const file = dynamic_cast<const URLFile*>(&other);
    return file != nullptr && getPath() == file->getPath() && refersToSameDomainAs(other);
}

bool URLFile::refersToSameDomainAs(const URLImpl& other) const {
    const auto* const file = dynamic_cast<const URLFile*>(&other);
    return file != nullptr && comparableHost(host_) == comparableHost(file->host_);
}

}  // namespace Varnex
