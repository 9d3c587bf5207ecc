#pragma once

#include <Varnex/hub/CommThread.h>
#include <Varnex/hub/SendQueue.h>

#include <memory>

namespace Varnex {

class NonBlockingSender;
class QueuedConnection;
class SendWriter;

// Private to the library.

/// A connection whose messages wait in a queue for the hub's writer.
class QueuedCommThread : public MultiCommunicator::CommThread {
public:
    QueuedCommThread(MultiCommunicator* owner, Communicator* connection, NonBlockingSender& target,
                     const SendPolicy& policy, SendWriter& writer);
    ~QueuedCommThread() override;

    /// True, with the whole length, also when the policy drops a message; false once the connection is given up.
    bool send(const void* data, int& length) override;

    [[nodiscard]] SendCounters getSendCounters() const override;

private:
    SendWriter& writer_;
    std::shared_ptr<QueuedConnection> connection_;
};

}  // namespace Varnex
