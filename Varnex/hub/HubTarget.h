#pragma once

#include <Varnex/hub/MultiCommunicator.h>

namespace Varnex {

/// Some of a hub's connections as a `Sender`, for `Event::send` and its like. Sends by the hub's policy; the hub
/// outlives it. Closing it does nothing.
///
///     event.send(&hub);                                  // to everyone
///     HubTarget others = HubTarget::allBut(hub, source);
///     event.send(&others);
class VARNEX_API HubTarget : public Sender {
public:
    /// One connection; false from `send` when the hub does not have it.
    static HubTarget only(MultiCommunicator& hub, const Communicator* connection) {
        return {hub, &MultiCommunicator::sendTo, connection};
    }
    static HubTarget allBut(MultiCommunicator& hub, const Communicator* connection) {
        return {hub, &MultiCommunicator::sendToOthers, connection};
    }

    ~HubTarget() override;

    bool close() override;
    using Sender::send;
    bool send(const void* data, int& n) override;
    [[nodiscard]] bool keepsMessages() const override { return true; }

private:
    using Operation = bool (MultiCommunicator::*)(const Communicator*, const void*, int&);

    HubTarget(MultiCommunicator& hub, Operation operation, const Communicator* connection)
        : hub_(hub), operation_(operation), connection_(connection) {}

    MultiCommunicator& hub_;
    Operation operation_;
    const Communicator* connection_;
};

}  // namespace Varnex
