#include <Varnex/streams/iStream.h>

namespace Varnex {

iStream::iStream(Receiver* receiver, bool own)
    : StreamBase(nullptr, receiver, 0, kBufferSize, false, own), std::basic_istream<char>(StreamBase::rdbuf()) {}

iStream::~iStream() = default;

}  // namespace Varnex
