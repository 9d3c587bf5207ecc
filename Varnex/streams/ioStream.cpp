#include <Varnex/streams/ioStream.h>

#include <Varnex/transport/Communicator.h>

namespace Varnex {

ioStream::ioStream(Communicator* connection, bool own)
    : StreamBase(connection, connection, kBufferSize, kBufferSize, own, false),
      std::basic_iostream<char>(StreamBase::rdbuf()) {}

ioStream::~ioStream() = default;

}  // namespace Varnex
