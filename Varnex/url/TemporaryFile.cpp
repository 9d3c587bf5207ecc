#include <Varnex/url/TemporaryFile.h>

#include <Varnex/transport/SystemError.h>
#include <Varnex/url/URLImpl.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace Varnex {

TemporaryFile::TemporaryFile() : name_(P_tmpdir "/varnexXXXXXX"), fd_(::mkostemp(name_.data(), O_CLOEXEC)) {
    if (!fd_.isOpen()) throw URLImpl::Exception(withErrno("Cannot make a temporary file", errno));
}

TemporaryFile::~TemporaryFile() {
    if (!name_.empty()) ::unlink(name_.c_str());
}

void TemporaryFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd_.get(), bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) throw URLImpl::Exception(withErrno("Cannot write a temporary file", n < 0 ? errno : ENOSPC));
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
}

void TemporaryFile::close() {
    const int error = fd_.close();
    if (error != 0) throw URLImpl::Exception(withErrno("Cannot write a temporary file", error));
}

std::string TemporaryFile::release() {
    return std::exchange(name_, {});
}

}  // namespace Varnex
