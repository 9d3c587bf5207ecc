#include <Varnex/streams/oStream.h>

namespace Varnex {

oStream::oStream(Sender* sender, bool own)
    : StreamBase(sender, nullptr, kBufferSize, 0, own, false), std::basic_ostream<char>(StreamBase::rdbuf()) {}

oStream::~oStream() = default;

}  // namespace Varnex
