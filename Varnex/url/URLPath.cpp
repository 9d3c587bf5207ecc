#include <Varnex/url/URLImpl.h>

#include <algorithm>
#include <string_view>

namespace Varnex {

namespace {

/// Removes empty, "." and ".." segments from a path, in one pass: what stays moves to the front, so that going back
/// over a segment costs what reading it did.
class Normalisation {
public:
    Normalisation(std::string& path, std::size_t start) : path_(path), read_(start), written_(start) {}

    void run() {
        while (step()) continue;
        path_.erase(written_, read_ - written_);
    }

private:
    [[nodiscard]] std::string_view rest() const { return std::string_view(path_).substr(read_); }

    /// Handles what begins here; false: nothing more is to be done.
    bool step() {
        if (rest().starts_with("/")) return skip(1);
        if (rest().starts_with("./")) return skip(2);
        if (rest().starts_with("../")) return written_ < 2 ? cutAfterLastSlash() : goUp();
        return keepSegment();
    }

    bool skip(std::size_t n) {
        read_ += n;
        return true;
    }

    bool keepSegment() {
        const std::size_t slash = path_.find('/', read_);
        if (slash == std::string::npos) return false;
        const std::size_t size = slash + 1 - read_;
        if (read_ != written_) std::copy_n(path_.data() + read_, size, path_.data() + written_);
        written_ += size;
        return skip(size);
    }

    bool goUp() {
        const std::size_t slash = path_.rfind('/', written_ - 2);
        if (slash == std::string::npos) return false;
        written_ = slash + 1;
        return skip(3);
    }

    /// A "../" at the very beginning takes everything after the last "/" of the path with it, unless that is its own;
    /// nothing follows then. An oddity, but wanted so.
    bool cutAfterLastSlash() {
        const std::size_t slash = path_.rfind('/');
        if (slash > read_ + 2) path_.resize(slash + 1);
        return false;
    }

    std::string& path_;
    std::size_t read_;
    std::size_t written_;
};

}  // namespace

bool URLImpl::makePathAbsolute(std::string& path, const std::string& basePath) {
    std::size_t start = 1;
    if (!path.starts_with('/')) {
        start = basePath.rfind('/') + 1;  // npos + 1 is 0
        path.insert(0, basePath, 0, start);
    }
    Normalisation(path, start).run();
    return true;
}

bool URLImpl::makePathRelative(std::string& path, const std::string& basePath) {
    if (!path.starts_with('/') || !basePath.starts_with('/')) return false;
    std::size_t common = 0;
    const std::size_t end = std::min(path.size(), basePath.size());
    for (std::size_t i = 1; i < end && path[i] == basePath[i]; ++i)
        if (path[i] == '/') common = i;
    const auto up = std::count(basePath.begin() + static_cast<std::ptrdiff_t>(common) + 1, basePath.end(), '/');
    std::string way;
    for (std::ptrdiff_t i = 0; i < up; ++i) way += "../";
    path.replace(0, common + 1, way);
    return true;
}

}  // namespace Varnex
