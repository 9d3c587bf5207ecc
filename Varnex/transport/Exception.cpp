#include <Varnex/transport/Exception.h>

#include <utility>

namespace Varnex {

Exception::Exception(std::string message) : message_(std::move(message)) {}

Exception::~Exception() = default;

const char* Exception::what() const {
    return message_.c_str();
}

}  // namespace Varnex
