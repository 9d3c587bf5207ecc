#pragma once

#include <Varnex/Export.h>

namespace Varnex {

/// Owns one descriptor, or none (-1), and closes it in the end. Movable, not copyable; one thread at a time.
class VARNEX_API UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept;
    ~UniqueFd();

    [[nodiscard]] int get() const { return fd_; }
    [[nodiscard]] bool isOpen() const { return fd_ >= 0; }

    /// Hands the descriptor to the caller and becomes empty.
    int release() noexcept;

    /// Closes and becomes empty, whatever happens. 0, or the error number; the close is never repeated, because an
    /// interrupted close(2) has already given the descriptor back.
    int close() noexcept;

private:
    int fd_ = -1;
};

}  // namespace Varnex
