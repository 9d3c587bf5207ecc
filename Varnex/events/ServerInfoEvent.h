#pragma once

#include <Varnex/events/Event.h>

#include <string>

namespace Varnex {

/// What a server tells about itself: where to connect, and what it is. Type ID 5.
///
/// Status, ID and mask are numbers that servers and clients of one application agree on; a mask has one bit for each
/// service. IDs above 32,767 arrive as negative numbers: compare them as `unsigned short`.
class VARNEX_API ServerInfoEvent : public Event {
public:
    ServerInfoEvent() = default;

    static Event* create();
    static EventType _type;
    [[nodiscard]] EventType* type() const override;

    [[nodiscard]] short getStatus() const { return status_; }
    void setStatus(short status) { status_ = status; }
    [[nodiscard]] short getId() const { return id_; }
    void setId(short id) { id_ = id; }
    [[nodiscard]] unsigned short getPort() const { return port_; }
    void setPort(unsigned short port) { port_ = port; }
    /// The low 32 bits travel.
    [[nodiscard]] long getMask() const { return mask_; }
    void setMask(long mask) { mask_ = mask; }
    /// Numeric text, such as "192.0.2.7".
    [[nodiscard]] const std::string& getHostAddress() const { return hostAddress_; }
    void setHostAddress(const std::string& address) { hostAddress_ = address; }
    [[nodiscard]] const std::string& getHostName() const { return hostName_; }
    void setHostName(const std::string& name) { hostName_ = name; }

protected:
    void addFields() override;
    void getFields() override;

private:
    short status_ = 0;
    short id_ = 0;
    unsigned short port_ = 0;
    long mask_ = 0;
    std::string hostAddress_;
    std::string hostName_;
};

}  // namespace Varnex
