#include <Varnex/web/FilePage.h>

#include <Varnex/protocols/MimeTypes.h>

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Varnex::FilePage {

namespace {

constexpr std::size_t kBlockSize = 4096;

/// False: it failed, or there is more than `maxSize`.
bool readAll(int fd, unsigned long maxSize, std::string& content) {
    for (;;) {
        const std::size_t size = content.size();
        content.resize(size + kBlockSize);
        const ssize_t n = ::read(fd, content.data() + size, kBlockSize);
        content.resize(size + static_cast<std::size_t>(n > 0 ? n : 0));
        if (maxSize > 0 && content.size() > maxSize) return false;
        if (n == 0) return true;
        if (n < 0 && errno != EINTR) return false;
    }
}

}  // namespace

UniqueFd open(const std::string& path) {
    if (path.find('\0') != std::string::npos) return {};
    return UniqueFd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

bool create(const UniqueFd& file, const std::string& path, unsigned long maxSize, ProtocolHTTP::Reply& reply) {
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    std::string content;
    if (maxSize == 0 || static_cast<unsigned long>(status.st_size) <= maxSize)
        content.reserve(static_cast<std::size_t>(status.st_size) + kBlockSize);
    if (!readAll(file.get(), maxSize, content)) return false;
    reply.body = std::move(content);
    reply.code = 200;
    reply.header.setParam("Content-Type", MimeTypes::identify(path));
    return true;
}

}  // namespace Varnex::FilePage
