#include <Varnex/streams/StreamBase.h>

namespace Varnex {

StreamBase::StreamBase(Sender* sender, Receiver* receiver, unsigned sendBufSize, unsigned recvBufSize,
                       bool deleteSender, bool deleteReceiver)
    : buffer_(sender, receiver, sendBufSize, recvBufSize, deleteSender, deleteReceiver) {}

StreamBase::~StreamBase() = default;

}  // namespace Varnex
