#pragma once

#include <Varnex/transport/UniqueFd.h>

#include <string>
#include <string_view>

namespace Varnex {

// Private to the library.

/// A new file that only this user can read, below the system's folder for temporary files; removed by the destructor
/// unless released. Failures throw `URLImpl::Exception`.
class TemporaryFile {
public:
    TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile();

    void write(std::string_view bytes);
    void close();

    /// The path; the file is the caller's then.
    [[nodiscard]] std::string release();

private:
    std::string name_;
    UniqueFd fd_;
};

}  // namespace Varnex
