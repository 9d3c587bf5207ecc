#include <Varnex/web/ConfinedFile.h>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Varnex {

namespace {

constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

/// For systems without openat2(2): one name after another, and no symbolic link at all.
UniqueFd openByNames(int folder, const std::string& path) {
    UniqueFd at(::fcntl(folder, F_DUPFD_CLOEXEC, 0));
    for (std::size_t begin = 0; begin <= path.size() && at.isOpen();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string name = path.substr(begin, end - begin);
        begin = end + 1;
        if (name == "..") return {};
        if (!name.empty()) at = UniqueFd(::openat(at.get(), name.c_str(), kFlags | O_NOFOLLOW));
    }
    return at;
}

}  // namespace

FolderFd::FolderFd(const std::string& path) : fd_(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {}

UniqueFd openBeneath(const FolderFd& folder, std::string path) {
    path.erase(0, path.find_first_not_of('/'));
    if (path.find('\0') != std::string::npos) return {};
    open_how how{};
    how.flags = kFlags;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    const long fd = ::syscall(SYS_openat2, folder.get(), path.empty() ? "." : path.c_str(), &how, sizeof how);
    if (fd < 0 && errno == ENOSYS) return openByNames(folder.get(), path);
    return UniqueFd(static_cast<int>(fd));
}

}  // namespace Varnex
