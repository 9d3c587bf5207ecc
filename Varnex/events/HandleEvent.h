#pragma once

#include <Varnex/events/Event.h>

#include <string>

namespace Varnex {

/// Names an object: the base of the events about one. Type ID 20.
///
/// The handle is what sender and receiver agree to call the object, such as "tracker-2/right-hand".
class VARNEX_API HandleEvent : public Event {
public:
    /// Null gives the empty handle.
    explicit HandleEvent(const char* handle = nullptr);

    static Event* create();
    static EventType _type;
    [[nodiscard]] EventType* type() const override;

    [[nodiscard]] const std::string& getHandle() const { return handle_; }
    /// Null empties the handle. At most 32,767 bytes can be received.
    void setHandle(const char* handle);

    /// A number of the application's choice, such as a time stamp or a sequence number; 0 at first.
    [[nodiscard]] unsigned long long getValue() const { return value_; }
    void setValue(unsigned long long value) { value_ = value; }

protected:
    void addFields() override;
    void getFields() override;

private:
    std::string handle_;
    unsigned long long value_ = 0;
};

}  // namespace Varnex
