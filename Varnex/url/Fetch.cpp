#include <Varnex/url/Fetch.h>

#include <Varnex/transport/SystemError.h>
#include <Varnex/url/LimitedBuf.h>
#include <Varnex/url/TemporaryFile.h>
#include <Varnex/url/URLImpl.h>
#include <Varnex/url/URLLocalFile.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLPolicy.h>
#include <Varnex/url/URLStream.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <limits>
#include <memory>
#include <utility>

#include <cxxabi.h>
#include <sys/mman.h>

namespace Varnex {

namespace {

/// Bytes that `read2mem` begins with when the length is not known; doubled as needed.
constexpr std::size_t kFirstBlock = 8192;
constexpr std::size_t kCopyBlock = 65536;
/// Bytes that a memory record can have.
constexpr long long kMaxMemory = std::numeric_limits<int>::max() - 1;

/// Has large blocks filled by pages of 2 MiB where the system has them: each page that is touched first costs a fault.
void useLargePages(char* data, std::size_t size) {
    constexpr std::size_t kLarge = 4U << 20, kPage = 4096;
    if (size < kLarge) return;
    const std::size_t skipped = kPage - reinterpret_cast<std::uintptr_t>(data) % kPage;
    static_cast<void>(::madvise(data + skipped, size - skipped, MADV_HUGEPAGE));
}

class Block {
public:
    explicit Block(std::size_t size) { grow(size); }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { std::free(data_); }

    void grow(std::size_t size) {
        void* const data = std::realloc(data_, size);
        if (data == nullptr) throw URLImpl::Exception("");
        data_ = static_cast<char*>(data);
        size_ = size;
        useLargePages(data_, size_);
    }
    [[nodiscard]] char* data() const { return data_; }
    [[nodiscard]] std::size_t size() const { return size_; }
    char* release() { return std::exchange(data_, nullptr); }

private:
    char* data_ = nullptr;
    std::size_t size_ = 0;
};

/// Up to `n` bytes, less only at the end. What else is thrown there becomes our own exception.
std::size_t readFrom(std::istream& stream, char* s, std::size_t n) try {
    return static_cast<std::size_t>(stream.rdbuf()->sgetn(s, static_cast<std::streamsize>(n)));
} catch (const URLImpl::Exception&) {
    throw;
} catch (const std::exception& error) {
    throw URLImpl::Exception(error.what());
} catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
} catch (...) {
    throw URLImpl::Exception("");
}

/// Throws for a resource that ended before its announced length, with the reason if the source knows one.
[[noreturn]] void refuseShort(std::istream& stream) {
    char next;
    static_cast<void>(readFrom(stream, &next, 1));
    throw URLImpl::Exception("");
}

/// Reads to the end, at most `limit` bytes, into a block that doubles; how many.
std::size_t readAll(std::istream& stream, Block& block, std::size_t limit) {
    std::size_t size = 0;
    while ((size += readFrom(stream, block.data() + size, block.size() - size)) == block.size()) {
        if (size > limit) break;
        block.grow(std::min(2 * block.size(), limit + 1));
    }
    return size;
}

}  // namespace

std::unique_ptr<std::streambuf> underPolicy(std::unique_ptr<std::streambuf> buffer, long long contentLength) {
    const auto policy = URLPolicy::getCurrent();
    policy->checkSize(contentLength);
    if (contentLength >= 0 || policy->getMaxSize() == 0) return buffer;
    return std::make_unique<LimitedBuf>(std::move(buffer), policy->getMaxSize());
}

URLImpl::Memory readToMemory(URLImpl::Stream& stream) {
    const int length = stream.getContentLength();
    if (length == 0) return {stream.getMimeType(), 0, nullptr, false};
    if (length > 0) {
        Block block(static_cast<std::size_t>(length));
        if (readFrom(stream, block.data(), block.size()) < block.size()) refuseShort(stream);
        return {stream.getMimeType(), length, block.release(), true};
    }
    const auto policy = URLPolicy::getCurrent();
    const long long limit = policy->getMaxSize() > 0 ? std::min(policy->getMaxSize(), kMaxMemory) : kMaxMemory;
    Block block(kFirstBlock);
    const auto size = static_cast<long long>(readAll(stream, block, static_cast<std::size_t>(limit)));
    policy->checkSize(size);
    if (stream.bad()) refuseShort(stream);
    if (size > limit) throw URLImpl::Exception("");
    return {stream.getMimeType(), static_cast<int>(size), block.release(), true};
}

URLImpl::File readToDisk(URLImpl::Stream& stream) {
    const auto policy = URLPolicy::getCurrent();
    TemporaryFile file;
    const auto block = std::make_unique_for_overwrite<char[]>(kCopyBlock);
    long long size = 0;
    while (const std::size_t n = readFrom(stream, block.get(), kCopyBlock)) {
        file.write({block.get(), n});
        policy->checkSize(size += static_cast<long long>(n));
    }
    if (size < stream.getContentLength()) refuseShort(stream);
    file.close();
    return {stream.getMimeType(), size, file.release(), true};
}

void URLImpl::checkPolicy() const {
    URLPolicy::getCurrent()->check(*this);
}

URLImpl::Stream* URLImpl::makeStream(std::unique_ptr<std::streambuf> buffer, std::string mimeType,
                                     long long contentLength) {
    if (buffer == nullptr) throw Exception("");
    return new Stream(underPolicy(std::move(buffer), contentLength), std::move(mimeType), contentLength);
}

URLImpl::Memory URLImpl::read2mem() const {
    const std::unique_ptr<Stream> stream(open());
    return readToMemory(*stream);
}

URLImpl::File URLImpl::read2disk() const {
    const std::unique_ptr<Stream> stream(open());
    return readToDisk(*stream);
}

}  // namespace Varnex
