#include "Output.h"

#include "Failure.h"
#include "Quote.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VarnexTool {

namespace {

std::string reason(int error) {
    return ": " + std::system_category().message(error);
}

void waitWritable(int fd) {
    pollfd polled{fd, POLLOUT, 0};
    ::poll(&polled, 1, -1);
}

}  // namespace

Output::Output(const std::string& file, long long kept) : name_(file.empty() ? "the standard output" : inQuotes(file)) {
    if (file.empty()) return;
    const int begin = kept > 0 ? O_APPEND : O_CREAT | O_TRUNC;
    file_ = Varnex::UniqueFd(::open(file.c_str(), O_WRONLY | begin | O_NOCTTY | O_CLOEXEC, 0666));
    if (!file_.isOpen()) throw Failure("cannot open " + name_ + " for writing" + reason(errno));
    if (kept > 0) checkSize(kept);
}

void Output::checkSize(long long size) const {
    struct stat status {};
    if (::fstat(file_.get(), &status) != 0) fail(errno);
    if (status.st_size != size) throw Failure(name_ + " has changed meanwhile");
}

void Output::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = ::write(descriptor(), bytes.data(), bytes.size());
        if (n >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(n));
        else if (errno == EAGAIN)
            waitWritable(descriptor());  // whoever shares it made it non-blocking
        else if (errno != EINTR)
            fail(errno);
    }
}

void Output::close() {
    if (const int error = file_.close(); error != 0) fail(error);
}

bool Output::isTerminal() const {
    return ::isatty(descriptor()) == 1;
}

void Output::fail(int error) const {
    throw Failure("cannot write to " + name_ + reason(error));
}

int Output::descriptor() const {
    return file_.isOpen() ? file_.get() : STDOUT_FILENO;
}

}  // namespace VarnexTool
