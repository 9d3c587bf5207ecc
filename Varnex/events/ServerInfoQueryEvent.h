#pragma once

#include <Varnex/events/Event.h>

namespace Varnex {

/// Asks servers to tell about themselves, with a `ServerInfoEvent`. Type ID 6.
///
/// It means those that share a bit with the mask, and of them the one with the ID; the application may agree on
/// something else. IDs above 32,767 arrive as negative numbers: compare them as `unsigned short`.
class VARNEX_API ServerInfoQueryEvent : public Event {
public:
    ServerInfoQueryEvent() = default;

    static Event* create();
    static EventType _type;
    [[nodiscard]] EventType* type() const override;

    /// The low 32 bits travel.
    [[nodiscard]] long getMask() const { return mask_; }
    void setMask(long mask) { mask_ = mask; }
    [[nodiscard]] short getId() const { return id_; }
    void setId(short id) { id_ = id; }

protected:
    void addFields() override;
    void getFields() override;

private:
    long mask_ = 0;
    short id_ = 0;
};

}  // namespace Varnex
