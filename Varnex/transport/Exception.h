#pragma once

#include <Varnex/Export.h>

#include <string>

namespace Varnex {

/// What the setting-up operations throw: opening, connecting, resolving, accepting.
///
/// On purpose not a `std::exception`: catch it by its own name, which catches `IOException` too.
class VARNEX_API Exception {
public:
    explicit Exception(std::string message);
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    virtual ~Exception();

    /// The message; lives as long as the exception.
    [[nodiscard]] virtual const char* what() const;

private:
    std::string message_;
};

}  // namespace Varnex
