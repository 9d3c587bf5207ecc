#include <Varnex/transport/IOException.h>

#include <Varnex/transport/SystemError.h>

namespace Varnex {

IOException::IOException(const std::string& context, int error) : Exception(withErrno(context, error)), error_(error) {}

IOException::~IOException() = default;

}  // namespace Varnex
