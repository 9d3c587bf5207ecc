#pragma once

#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/transport/UniqueFd.h>

#include <string>

namespace Varnex::FilePage {

// Private to the library: what the pages that read a whole file have in common.

/// Fills in the reply with what is left to read of a file, 200 and the type of `path`. False, and the reply stays as it
/// is: not a regular file, larger than `maxSize` (0: no limit), or it cannot be read.
[[nodiscard]] bool create(const UniqueFd& file, const std::string& path, unsigned long maxSize,
                          ProtocolHTTP::Reply& reply);

/// Opens for reading, without ever waiting for a FIFO.
[[nodiscard]] UniqueFd open(const std::string& path);

}  // namespace Varnex::FilePage
