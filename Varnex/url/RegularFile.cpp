#include <Varnex/url/RegularFile.h>

#include <Varnex/url/CText.h>
#include <Varnex/url/URLImpl.h>
#include <Varnex/url/URLPolicy.h>

#include <climits>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Varnex {

namespace {

std::string realPath(const std::string& path) {
    return orEmpty(CText(::realpath(path.c_str(), nullptr)).get());
}

/// Where an open file is, whatever has happened to the path since.
std::string pathOf(const UniqueFd& fd) {
    char path[PATH_MAX];
    const ssize_t n = ::readlink(("/proc/self/fd/" + std::to_string(fd.get())).c_str(), path, sizeof path);
    return n < 0 ? "" : std::string(path, static_cast<std::size_t>(n));
}

/// No device: opening one may already do something, such as restarting what hangs on a serial line.
bool isRegular(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

/// Nothing outside the policy's folder is opened, not even to look at it.
bool openIfAllowed(const std::string& path, UniqueFd& fd) {
    const auto policy = URLPolicy::getCurrent();
    if (policy->confinesFiles() && !policy->allowsFile(realPath(path))) return false;
    if (!isRegular(path)) return false;
    fd = UniqueFd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return fd.isOpen() && (!policy->confinesFiles() || policy->allowsFile(pathOf(fd)));
}

}  // namespace

RegularFile openRegularFile(const std::string& path) {
    RegularFile file;
    struct stat status {};
    if (path.find('\0') != std::string::npos || !openIfAllowed(path, file.fd) || ::fstat(file.fd.get(), &status) != 0 ||
        !S_ISREG(status.st_mode))
        throw URLImpl::Exception("Open error - cannot open file");
    file.size = status.st_size;
    return file;
}

}  // namespace Varnex
