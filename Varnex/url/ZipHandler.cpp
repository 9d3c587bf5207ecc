#include <Varnex/url/ZipHandler.h>

#include <Varnex/url/Fetch.h>
#include <Varnex/url/Quietly.h>
#include <Varnex/url/URLPolicy.h>
#include <Varnex/url/URLStream.h>
#include <Varnex/url/URLZip.h>
#include <Varnex/url/ZipCache.h>
#include <Varnex/url/ZipMemberBuf.h>
#include <Varnex/url/inflatebuf.h>
#include <Varnex/url/storebuf.h>

#include <fstream>
#include <utility>

namespace Varnex {

namespace {

std::unique_ptr<std::istream> openCopy(const std::string& path) {
    auto stream = std::make_unique<std::ifstream>(path, std::ios_base::binary);
    if (!stream->is_open()) throw URLImpl::Exception("Open error - cannot open file");
    return stream;
}

bool canMove(std::istream& stream) {
    const auto nowhere = std::streampos(std::streamoff(-1));
    const auto position = [&] { return stream.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in); };
    return quietly(position, nowhere) != nowhere;
}

std::unique_ptr<std::streambuf> memberData(std::unique_ptr<std::istream> archive, std::uint64_t offset,
                                           const ZipEntry& entry) {
    auto stored = std::make_unique<storebuf>(std::move(archive), offset, entry.compressedSize);
    if (entry.method == ZipEntry::kStored) return stored;
    return std::make_unique<inflatebuf>(std::make_unique<URLImpl::Stream>(std::move(stored), "", -1));
}

}  // namespace

ZipHandler::ZipHandler(URLImpl::Stream& archive, std::shared_ptr<const URLPolicy> policy) : policy_(std::move(policy)) {
    if (canMove(archive)) {
        directory_.emplace(archive, URLZip::getMaxDirectorySize());
    } else {
        copy_ = readToDisk(archive);
        directory_.emplace(*openCopy(copy_->getName()), URLZip::getMaxDirectorySize());
    }
}

ZipHandler::Member ZipHandler::open(const URLImpl& archive, const std::string& name) {
    const std::string url = archive.toString();
    if (const auto known = ZipCache::instance().find(url); known != nullptr) {
        auto stream = known->openArchive(archive);
        if (stream != nullptr && known->isCurrent(*stream, name)) return known->openMember(std::move(stream), name);
    }
    auto policy = URLPolicy::getCurrent();
    std::unique_ptr<URLImpl::Stream> stream(archive.open());
    const auto handler = std::make_shared<const ZipHandler>(*stream, std::move(policy));
    ZipCache::instance().put(url, handler);
    if (handler->copy_) return handler->openMember(openCopy(handler->copy_->getName()), name);
    return handler->openMember(std::move(stream), name);
}

std::unique_ptr<std::istream> ZipHandler::openArchive(const URLImpl& archive) const {
    if (!copy_) return std::unique_ptr<std::istream>(archive.open());
    if (URLPolicy::getCurrent() != policy_) return nullptr;
    policy_->check(archive);
    auto stream = std::make_unique<std::ifstream>(copy_->getName(), std::ios_base::binary);
    return stream->is_open() ? std::move(stream) : nullptr;
}

bool ZipHandler::isCurrent(std::istream& archive, const std::string& name) const {
    if (!directory_->isOf(archive)) return false;
    const ZipEntry* const entry = directory_->find(name);
    if (entry == nullptr) return true;
    const auto header = ZipLocalHeader::read(archive, entry->headerOffset);
    return header && header->agreesWith(name, *entry);
}

ZipHandler::Member ZipHandler::openMember(std::unique_ptr<std::istream> archive, const std::string& name) const {
    const ZipEntry* const entry = directory_->find(name);
    if (entry == nullptr) throw URLImpl::Exception("Zip does not contain file");
    if (!entry->isSupported()) throw URLImpl::Exception("Unsupported compression method");
    const auto header = ZipLocalHeader::read(*archive, entry->headerOffset);
    const bool isStored = entry->method == ZipEntry::kStored;
    if (!header || header->name != name || (isStored && entry->compressedSize != entry->size))
        throw URLImpl::Exception("Invalid zip file");
    auto data = memberData(std::move(archive), header->dataOffset, *entry);
    return {std::make_unique<ZipMemberBuf>(std::move(data), entry->size, entry->crc), entry->size};
}

}  // namespace Varnex
