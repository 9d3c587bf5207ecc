#pragma once

#include <Varnex/transport/DatagramCommunicator.h>

namespace Varnex {

/// Datagrams between hosts: sends to one set destination, receives from anyone on its port.
class VARNEX_API UDP : public DatagramCommunicator {
public:
    UDP() = default;
    ~UDP() override;

    /// Binds `setPort`'s port on all addresses.
    bool open() override;

    /// Where `send` goes, at any time; port 0, the default: the own port.
    void setDestination(const InetAddress& to, unsigned short port = 0);
    [[nodiscard]] const InetAddress& getDestination() const { return destination(); }

protected:
    [[nodiscard]] unsigned short destinationPort() const override;

private:
    unsigned short destinationPort_ = 0;
};

}  // namespace Varnex
