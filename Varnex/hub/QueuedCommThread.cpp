#include <Varnex/hub/QueuedCommThread.h>

#include <Varnex/hub/BroadcastScope.h>
#include <Varnex/hub/QueuedConnection.h>
#include <Varnex/hub/SendWriter.h>

namespace Varnex {

QueuedCommThread::QueuedCommThread(MultiCommunicator* owner, Communicator* connection, NonBlockingSender& target,
                                   const SendPolicy& policy, SendWriter& writer)
    : CommThread(owner, connection),
      writer_(writer),
      connection_(
          std::make_shared<QueuedConnection>(target, policy, [this](LostReason reason) { reportLost(reason); })) {
    writer_.add(connection_);
}

QueuedCommThread::~QueuedCommThread() {
    writer_.remove(connection_);
}

bool QueuedCommThread::send(const void* data, int& length) {
    const bool valid = data != nullptr && length >= 0;
    if (valid && connection_->push(BroadcastScope::messageOf(data, length))) {
        writer_.wake();
        return true;
    }
    length = 0;
    return false;
}

SendCounters QueuedCommThread::getSendCounters() const {
    return connection_->getCounters();
}

}  // namespace Varnex
