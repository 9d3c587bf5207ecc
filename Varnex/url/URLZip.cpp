#include <Varnex/url/URLZip.h>

#include <Varnex/protocols/MimeTypes.h>
#include <Varnex/url/Fetch.h>
#include <Varnex/url/URLFile.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLStream.h>
#include <Varnex/url/UrlGrammar.h>
#include <Varnex/url/UrlParts.h>
#include <Varnex/url/ZipCache.h>
#include <Varnex/url/ZipHandler.h>

#include <atomic>
#include <utility>

namespace Varnex {

using namespace UrlParts;

static_assert(URLZip::kDefaultCacheSize == ZipCache::kDefaultCapacity);

namespace {

constinit std::atomic<unsigned long> maxDirectorySize = URLZip::kDefaultMaxDirectorySize;
constinit std::atomic<int> maxNesting = URLZip::kDefaultMaxNesting;

/// Counts the archives that this thread is parsing, one inside another.
class Nesting {
public:
    Nesting() {
        const int limit = maxNesting;
        if (limit > 0 && depth_ >= limit) throw URLImpl::Exception("Cannot parse URL");
        ++depth_;
    }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;
    ~Nesting() { --depth_; }

private:
    static inline thread_local int depth_ = 0;
};

[[noreturn]] void refuseWithoutArchive() {
    throw URLImpl::Exception("Parse error - missing URL of Zip file");
}

/// A "!/" in the name of a member would end the archive's URL when the whole is parsed again.
void protectMark(std::string& path) {
    if (path.find("!/") == std::string::npos) return;
    std::string result;
    for (std::size_t i = 0; i < path.size(); ++i) result += path.compare(i, 2, "!/") == 0 ? "%21" : path.substr(i, 1);
    path = std::move(result);
}

URL parseArchive(const std::string& text) {
    const Nesting nesting;
    if (UrlGrammar::trimmed(text).empty()) refuseWithoutArchive();
    URL archive(URLImpl::create(text, URLFile::_cwd));
    if (!archive) throw URLImpl::Exception("Cannot parse URL");
    return archive;
}

}  // namespace

URLZip::URLZip(std::string scheme, URL archive, std::string path, std::string newFragment)
    : URLImpl(std::move(newFragment)),
      scheme_(std::move(scheme)),
      archive_(std::move(archive)),
      path_(std::move(path)) {}

URLZip::~URLZip() = default;

URLImpl* URLZip::createAbsolute(const std::string& scheme, const std::string& text) {
    const std::size_t mark = text.rfind("!/");
    if (mark == std::string::npos) refuseWithoutArchive();
    URL archive = parseArchive(text.substr(0, mark));
    std::string rest = text.substr(mark + 1), path, newFragment;
    parsePath(rest, path);
    refuseQuery(rest);
    parseFragment(rest, newFragment);
    normalisePath(path);
    protectMark(path);
    return new URLZip(scheme, std::move(archive), std::move(path), std::move(newFragment));
}

URLZip* URLZip::createRelative(const std::string& text) const {
    Reference parts = parseReference(text);
    if (parts.hasAuthority) refuseWithoutArchive();
    if (parts.hasPath)
        mergePath(parts.path, path_);
    else
        parts.path = path_;
    protectMark(parts.path);
    return new URLZip(scheme_, archive_, std::move(parts.path), std::move(parts.fragment));
}

std::string URLZip::getScheme() const {
    return scheme_;
}

std::string URLZip::toString() const {
    return scheme_ + ":" + archive_->toString() + "!" + path_ + withHash(fragment);
}

std::string URLZip::toRelativeString(const URLImpl& base) const {
    const auto* const other = dynamic_cast<const URLZip*>(&base);
    if (other == nullptr || archive_->toString() != other->archive_->toString()) return toString();
    std::string way = path_;
    makePathRelative(way, other->path_);
    return way + withHash(fragment);
}

URLImpl::Stream* URLZip::open() const {
    checkPolicy();
    const std::string name = getPath().erase(0, 1);
    ZipHandler::Member member = ZipHandler::open(*archive_, name);
    return makeStream(std::move(member.buffer), MimeTypes::identify(name), member.size);
}

URLImpl::Memory URLZip::read2mem() const {
    const std::unique_ptr<Stream> stream(open());
    Memory memory = readToMemory(*stream);
    stream->rdbuf()->sgetc();  // past the last byte the checksum is looked at
    return memory;
}

std::string URLZip::getPath() const {
    return decoded(path_);
}

std::string URLZip::getName() const {
    return lastSegment(path_);
}

URLZip* URLZip::getBase() const {
    return new URLZip(scheme_, archive_, directory(path_), "");
}

bool URLZip::refersToSameFileAs(const URLImpl& other) const {
    const auto* const zip = dynamic_cast<const URLZip*>(&other);
    return zip != nullptr && getPath() == zip->getPath() && archive_->refersToSameFileAs(*zip->archive_);
}

bool URLZip::refersToSameDomainAs(const URLImpl& other) const {
    const auto* const zip = dynamic_cast<const URLZip*>(&other);
    return zip != nullptr && archive_->refersToSameDomainAs(*zip->archive_);
}

void URLZip::setCacheSize(std::size_t archives) {
    ZipCache::instance().setCapacity(archives);
}

void URLZip::clearCache() {
    ZipCache::instance().clear();
}

void URLZip::setMaxDirectorySize(unsigned long bytes) {
    maxDirectorySize = bytes;
}

unsigned long URLZip::getMaxDirectorySize() {
    return maxDirectorySize;
}

void URLZip::setMaxNesting(int archives) {
    maxNesting = archives;
}

}  // namespace Varnex
