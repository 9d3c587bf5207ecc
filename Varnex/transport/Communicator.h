#pragma once

#include <Varnex/transport/Receiver.h>
#include <Varnex/transport/Sender.h>

namespace Varnex {

/// A byte channel in both directions: what connections of every kind have in common.
///
/// One thread may send while another waits and receives; the owner closes when both are done.
class VARNEX_API Communicator : public Sender, public Receiver {
public:
    ~Communicator() override;

    using Sender::close;  // one operation for both halves; without this the name would be ambiguous
};

}  // namespace Varnex
