#pragma once

#include <Varnex/events/HandleEvent.h>

namespace Varnex {

/// The base of the events that move a named object. Type ID 22.
///
/// The application gives the two flags their meaning, such as visible and selected, or tracked and calibrated.
class VARNEX_API TransformEvent : public HandleEvent {
public:
    explicit TransformEvent(const char* handle = nullptr, bool flag1 = false, bool flag2 = false);

    static Event* create();
    static EventType _type;
    [[nodiscard]] EventType* type() const override;

    [[nodiscard]] bool getFlag1() const { return flag1_; }
    void setFlag1(bool flag) { flag1_ = flag; }
    [[nodiscard]] bool getFlag2() const { return flag2_; }
    void setFlag2(bool flag) { flag2_ = flag; }

protected:
    void addFields() override;
    void getFields() override;

private:
    bool flag1_;
    bool flag2_;
};

}  // namespace Varnex
