#include <Varnex/transport/SystemError.h>

#include <boost/system/error_code.hpp>

namespace Varnex {

std::string systemErrorText(int error) {
    return boost::system::system_category().message(error);
}

std::string withErrno(std::string_view context, int error) {
    return std::string(context) + " (" + systemErrorText(error) + ")";
}

}  // namespace Varnex
